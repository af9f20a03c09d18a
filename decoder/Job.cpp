// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "decoder/Job.h"

#include <sys/socket.h>

#include <cstring>

namespace sorakaze::decoder {

ssize_t ReceiveJob(int channel, Job& job) {
    iovec part{&job.request, sizeof job.request};
    constexpr std::size_t kMost = 3;
    alignas(cmsghdr) char control[CMSG_SPACE(kMost * sizeof(int))];
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t got = ::recvmsg(channel, &message, MSG_CMSG_CLOEXEC);
    const cmsghdr* const header = got > 0 ? CMSG_FIRSTHDR(&message) : nullptr;
    if (!header) return got;
    int numbers[kMost] = {-1, -1, -1};
    std::memcpy(numbers, CMSG_DATA(header), header->cmsg_len - CMSG_LEN(0));
    job.file = FileDescriptor(numbers[0]);
    job.socket = FileDescriptor(numbers[1]);
    job.ring = FileDescriptor(numbers[2]);
    return got;
}

}  // namespace sorakaze::decoder
