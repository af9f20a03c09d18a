// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Writing bytes to a file that is there: FolderItem::OpenAsBinaryFile. They reach the system with each Write.
#pragma once

#include <memory>
#include <utility>

#include "app/runtime/String.h"
#include "base/RegularFile.h"

namespace sorakaze {

class BinaryStream {
  public:
    explicit BinaryStream(FileHandle file);

    /// False if not all bytes could be written: the disk is full, say, or the stream closed.
    bool Write(const String& bytes);
    void Close() { file_.reset(); }

  private:
    FileHandle file_;
};

using BinaryStreamRef = std::shared_ptr<BinaryStream>;

}  // namespace sorakaze
