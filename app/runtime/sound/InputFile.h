// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A regular file, opened for the demuxing library to read. Anything else that a path can name (a folder, a
// fifo, a device) is refused before a read could block on it.
#pragma once

#include <filesystem>
#include <memory>

#include "app/runtime/sound/AvSupport.h"

namespace sorakaze::sound {

class InputFile {
  public:
    /// Empty when the path names no readable, non-empty regular file.
    static std::unique_ptr<InputFile> Open(const std::filesystem::path& file);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// Lives as long as this object.
    AVIOContext* Io() { return io_.get(); }

  private:
    explicit InputFile(int descriptor) : descriptor_(descriptor) {}
    static int Read(void* self, std::uint8_t* buffer, int size);
    static std::int64_t Seek(void* self, std::int64_t offset, int whence);

    int descriptor_;
    AvPointer<AVIOContext> io_;
};

}  // namespace sorakaze::sound
