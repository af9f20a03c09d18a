// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/Lines.h"

#include <utility>

#include "base/unicode/Conversion.h"

namespace sorakaze::player {

namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

}  // namespace

void Lines::Read(std::string_view piece) {
    if (encoding_ == Encoding::Bytes) {
        Split(piece);
        return;
    }
    undecoded_ += piece;
    if (encoding_ == Encoding::Unknown && !FindEncoding()) return;
    if (encoding_ == Encoding::Utf16) {
        ReadUtf16();
    } else {
        Split(std::exchange(undecoded_, {}));
    }
}

/// False until there are bytes enough to tell.
bool Lines::FindEncoding() {
    if (undecoded_.size() < kUtf8Mark.size()) return false;
    bigEndian_ = undecoded_.starts_with("\xFE\xFF");
    const bool utf16 = bigEndian_ || undecoded_.starts_with("\xFF\xFE");
    encoding_ = utf16 ? Encoding::Utf16 : Encoding::Bytes;
    const std::size_t mark = utf16 ? 2 : undecoded_.starts_with(kUtf8Mark) ? kUtf8Mark.size() : 0;
    undecoded_.erase(0, mark);
    return true;
}

/// Keeps half a unit, and half a pair, for the next piece.
void Lines::ReadUtf16() {
    std::size_t whole = undecoded_.size() / 2 * 2;
    if (whole == 0) return;
    const auto high = static_cast<unsigned char>(undecoded_[whole - (bigEndian_ ? 2 : 1)]);
    if (high >= 0xD8 && high <= 0xDB) whole -= 2;
    Split(Decoded(std::string_view(undecoded_).substr(0, whole)));
    undecoded_.erase(0, whole);
}

std::string Lines::Decoded(std::string_view utf16) const {
    return unicode::ToUtf8(
        utf16, bigEndian_ ? unicode::Encoding::Utf16BigEndian : unicode::Encoding::Utf16LittleEndian);
}

void Lines::Split(std::string_view text) {
    while (!text.empty()) {
        if (std::exchange(afterCr_, false) && text.front() == '\n') {
            text.remove_prefix(1);
            continue;
        }
        const auto end = text.find_first_of("\r\n");
        Add(text.substr(0, end));
        if (end == std::string_view::npos) return;
        afterCr_ = text[end] == '\r';
        EndLine();
        text.remove_prefix(end + 1);
    }
}

void Lines::Add(std::string_view text) {
    tooLong_ = tooLong_ || line_.size() + text.size() > longest_;
    if (tooLong_) {
        line_.clear();
    } else {
        line_ += text;
    }
}

void Lines::EndLine() {
    if (!std::exchange(tooLong_, false)) visit_(line_);
    line_.clear();
}

void Lines::Finish() {
    if (encoding_ == Encoding::Utf16) {
        Split(Decoded(undecoded_));
    } else {
        Split(undecoded_);
    }
    if (!line_.empty()) EndLine();
}

}  // namespace sorakaze::player
