// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/BinaryStream.h"

namespace sorakaze {

BinaryStream::BinaryStream(FileHandle file) : file_(std::move(file)) {
    std::setvbuf(file_.get(), nullptr, _IONBF, 0);
}

bool BinaryStream::Write(const String& bytes) {
    const std::string& data = bytes.Bytes();
    return file_ && std::fwrite(data.data(), 1, data.size(), file_.get()) == data.size();
}

}  // namespace sorakaze
