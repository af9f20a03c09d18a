// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/sound/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace sorakaze::sound {
namespace {

constexpr int kBufferBytes = 128 * 1024;

bool IsNonEmptyRegularFile(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
}

}  // namespace

std::unique_ptr<InputFile> InputFile::Open(const std::filesystem::path& file) {
    // Looked at first, as opening a device can have effects; and again behind the open, as the name may have
    // changed hands in between. O_NONBLOCK keeps a fifo without a writer from holding the caller.
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) return nullptr;
    const int descriptor = open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0) return nullptr;
    std::unique_ptr<InputFile> input(new InputFile(descriptor));
    if (!IsNonEmptyRegularFile(descriptor)) return nullptr;

    auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
    if (!buffer) return nullptr;
    input->io_.reset(avio_alloc_context(buffer, kBufferBytes, 0, input.get(), &Read, nullptr, &Seek));
    if (!input->io_) {
        av_free(buffer);
        return nullptr;
    }
    return input;
}

InputFile::~InputFile() {
    io_.reset();
    close(descriptor_);
}

int InputFile::Read(void* self, std::uint8_t* buffer, int size) {
    const int descriptor = static_cast<InputFile*>(self)->descriptor_;
    for (;;) {
        const ssize_t got = read(descriptor, buffer, static_cast<std::size_t>(size));
        if (got > 0) return static_cast<int>(got);
        if (got == 0) return AVERROR_EOF;
        if (errno != EINTR) return AVERROR(errno);
    }
}

std::int64_t InputFile::Seek(void* self, std::int64_t offset, int whence) {
    const int descriptor = static_cast<InputFile*>(self)->descriptor_;
    if (whence & AVSEEK_SIZE) {
        struct stat status {};
        return fstat(descriptor, &status) == 0 ? status.st_size : AVERROR(errno);
    }
    const off_t position = lseek(descriptor, offset, whence & ~AVSEEK_FORCE);
    return position < 0 ? AVERROR(errno) : position;
}

}  // namespace sorakaze::sound
