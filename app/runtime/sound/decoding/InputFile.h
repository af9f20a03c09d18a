// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A regular file that was opened for the demuxing library to read. See OpenRegularFile.
#pragma once

#include <memory>
#include <utility>

#include "app/runtime/process/Descriptor.h"
#include "app/runtime/sound/AvSupport.h"

namespace sorakaze::sound {

class InputFile {
  public:
    /// Empty when there is no memory left.
    static std::unique_ptr<InputFile> Adopt(process::Descriptor descriptor);
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// Lives as long as this object.
    AVIOContext* Io() { return io_.get(); }

  private:
    explicit InputFile(process::Descriptor descriptor) : descriptor_(std::move(descriptor)) {}
    static int Read(void* self, std::uint8_t* buffer, int size);
    static std::int64_t Seek(void* self, std::int64_t offset, int whence);

    const process::Descriptor descriptor_;
    AvPointer<AVIOContext> io_;
};

}  // namespace sorakaze::sound
