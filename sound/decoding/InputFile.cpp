// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/decoding/InputFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace sorakaze::sound {
namespace {

constexpr int kBufferBytes = 128 * 1024;

}  // namespace

std::unique_ptr<InputFile> InputFile::Adopt(FileDescriptor descriptor) {
    std::unique_ptr<InputFile> input(new InputFile(std::move(descriptor)));
    auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
    if (!buffer) return nullptr;
    input->io_.reset(avio_alloc_context(buffer, kBufferBytes, 0, input.get(), &Read, nullptr, &Seek));
    if (!input->io_) {
        av_free(buffer);
        return nullptr;
    }
    return input;
}

int InputFile::Read(void* self, std::uint8_t* buffer, int size) {
    const int descriptor = static_cast<InputFile*>(self)->descriptor_.Get();
    for (;;) {
        const ssize_t got = read(descriptor, buffer, static_cast<std::size_t>(size));
        if (got > 0) return static_cast<int>(got);
        if (got == 0) return AVERROR_EOF;
        if (errno != EINTR) return AVERROR(errno);
    }
}

std::int64_t InputFile::Seek(void* self, std::int64_t offset, int whence) {
    const int descriptor = static_cast<InputFile*>(self)->descriptor_.Get();
    if (whence & AVSEEK_SIZE) {
        struct stat status {};
        return fstat(descriptor, &status) == 0 ? status.st_size : AVERROR(errno);
    }
    const off_t position = lseek(descriptor, offset, whence & ~AVSEEK_FORCE);
    return position < 0 ? AVERROR(errno) : position;
}

}  // namespace sorakaze::sound
