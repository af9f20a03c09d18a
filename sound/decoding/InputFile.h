// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A regular file that was opened for the demuxing library to read. See OpenNonEmptyFile.
#pragma once

#include <memory>
#include <utility>

#include "base/FileDescriptor.h"
#include "sound/AvSupport.h"

namespace sorakaze::sound {

class InputFile {
  public:
    /// Empty when there is no memory left.
    static std::unique_ptr<InputFile> Adopt(FileDescriptor descriptor);
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// Lives as long as this object.
    AVIOContext* Io() { return io_.get(); }

  private:
    explicit InputFile(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}
    static int Read(void* self, std::uint8_t* buffer, int size);
    static std::int64_t Seek(void* self, std::int64_t offset, int whence);

    const FileDescriptor descriptor_;
    AvPointer<AVIOContext> io_;
};

}  // namespace sorakaze::sound
