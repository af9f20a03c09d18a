// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/TextStreams.h"

#include <fcntl.h>

#include <string>
#include <string_view>

namespace sorakaze {
TextInputStream::TextInputStream(FileHandle file) : file_(std::move(file)) {
    char mark[3] = {};
    const bool marked = std::fread(mark, 1, sizeof mark, file_.get()) == sizeof mark &&
                        std::string_view(mark, sizeof mark) == "\xEF\xBB\xBF";
    if (!marked) std::rewind(file_.get());
}

std::shared_ptr<TextInputStream> TextInputStream::Open(const FolderItemRef& file) {
    FileHandle handle = OpenRegularFile(NotNil(file)->Path(), O_RDONLY, "rb");
    return handle ? std::make_shared<TextInputStream>(std::move(handle)) : nullptr;
}

int TextInputStream::Read() {
    return file_ ? getc_unlocked(file_.get()) : EOF;
}

int TextInputStream::Peek() {
    const int byte = Read();
    if (byte != EOF) std::ungetc(byte, file_.get());
    return byte;
}

String TextInputStream::ReadLine() {
    std::string line;
    for (int byte = Read(); byte != EOF && byte != '\n'; byte = Read()) {
        if (byte == '\r') {
            if (Peek() == '\n') Read();
            break;
        }
        line += static_cast<char>(byte);
    }
    return line;
}

bool TextInputStream::EndOfFile() {
    return Peek() == EOF;
}

std::shared_ptr<TextOutputStream> TextOutputStream::Create(const FolderItemRef& file) {
    FileHandle handle = CreateRegularFile(NotNil(file)->Path());
    return handle ? std::make_shared<TextOutputStream>(std::move(handle)) : nullptr;
}

void TextOutputStream::Write(const String& text) {
    if (file_) std::fwrite(text.Bytes().data(), 1, text.Bytes().size(), file_.get());
}

}  // namespace sorakaze
