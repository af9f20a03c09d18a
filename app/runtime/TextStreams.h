// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Reading and writing text files.
#pragma once

#include <memory>

#include "app/runtime/FolderItem.h"
#include "base/RegularFile.h"

namespace sorakaze {

class TextInputStream {
  public:
    explicit TextInputStream(FileHandle file);

    /// Empty if the file can't be read or is a folder. A byte order mark at the file's start is no part of
    /// the text.
    static std::shared_ptr<TextInputStream> Open(const FolderItemRef& file);

    /// One line without its end (LF, CR or both); empty after the last one.
    String ReadLine();
    /// True when nothing is left to read.
    bool EndOfFile();
    void Close() { file_.reset(); }

  private:
    int Read();
    int Peek();

    FileHandle file_;
};

class TextOutputStream {
  public:
    explicit TextOutputStream(FileHandle file) : file_(std::move(file)) {}

    /// Creates the file, in place of one or of a link of that name; empty where that can't be done. Whoever
    /// reads the old one at the time goes on reading that.
    static std::shared_ptr<TextOutputStream> Create(const FolderItemRef& file);

    /// Writes the text with no line end.
    void Write(const String& text);
    void Close() { file_.reset(); }

  private:
    FileHandle file_;
};

}  // namespace sorakaze
