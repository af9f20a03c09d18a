// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/TextSearch.h"

#include <cstring>

#include "base/Utf8.h"
#include "base/unicode/Characters.h"

namespace sorakaze {
namespace {

/// Needles up to this many bytes are compared at each candidate; longer ones go through a table, so that no
/// needle makes the search quadratic.
constexpr std::size_t kShort = 32;

unsigned char LowerAscii(unsigned char byte) {
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + 32) : byte;
}

bool IsLetter(unsigned char byte) {
    const unsigned char lower = LowerAscii(byte);
    return lower >= 'a' && lower <= 'z';
}

/// The only characters outside ASCII whose case folding lies within: the long s and the kelvin sign.
bool HoldsAsciiLookalike(std::string_view text) {
    return memmem(text.data(), text.size(), "\xC5\xBF", 2) ||
           memmem(text.data(), text.size(), "\xE2\x84\xAA", 3);
}

template <typename Sequence>
std::vector<std::size_t> RestartTable(const Sequence& needle) {
    std::vector<std::size_t> restart(needle.size() + 1, 0);
    for (std::size_t i = 1, matched = 0; i < needle.size(); ++i) {
        while (matched > 0 && needle[i] != needle[matched]) matched = restart[matched];
        if (needle[i] == needle[matched]) ++matched;
        restart[i + 1] = matched;
    }
    return restart;
}

}  // namespace

TextSearch::TextSearch(std::string_view text, std::string_view find) : text_(text), find_(find) {
    if (find.empty()) return;
    bool ascii = true;
    bool letters = false;
    bool lookalikes = false;
    bool caseless = true;
    for (std::size_t at = 0; at < find.size();) {
        const auto character = utf8::Read(find, at);
        at += character.size;
        if (character.code < 0x80) {
            const auto byte = static_cast<unsigned char>(character.code);
            letters = letters || IsLetter(byte);
            lookalikes = lookalikes || LowerAscii(byte) == 's' || LowerAscii(byte) == 'k';
        } else {
            ascii = false;
            caseless = caseless && unicode::IsPlainlyCaseless(character.code);
        }
    }
    if (!letters && caseless) {
        way_ = find.size() <= text.size() ? Way::Exact : Way::Nothing;
    } else if (ascii && !(lookalikes && HoldsAsciiLookalike(text))) {
        way_ = find.size() <= text.size() ? Way::Ascii : Way::Nothing;
        lower_.reserve(find.size());
        for (const char byte : find) {
            lower_ += static_cast<char>(LowerAscii(static_cast<unsigned char>(byte)));
        }
        if (find.size() > kShort) restart_ = RestartTable(lower_);
    } else {
        way_ = Way::Folded;
        PrepareFolded();
    }
}

void TextSearch::PrepareFolded() {
    for (std::size_t at = 0; at < find_.size();) {
        const auto character = utf8::Read(find_, at);
        folded_.push_back(unicode::Fold(character.code));
        at += character.size;
    }
    restart_ = RestartTable(folded_);
}

std::optional<TextSearch::Match> TextSearch::Next(std::size_t from) const {
    if (from > text_.size()) return std::nullopt;
    switch (way_) {
        case Way::Exact:
            return NextExact(from);
        case Way::Ascii:
            return find_.size() > kShort ? NextAsciiLong(from) : NextAscii(from);
        case Way::Folded:
            return NextFolded(from);
        case Way::Nothing:
            break;
    }
    return std::nullopt;
}

std::optional<TextSearch::Match> TextSearch::NextExact(std::size_t from) const {
    const void* hit = find_.size() == 1
                          ? std::memchr(text_.data() + from, find_[0], text_.size() - from)
                          : memmem(text_.data() + from, text_.size() - from, find_.data(), find_.size());
    if (!hit) return std::nullopt;
    const auto begin = static_cast<std::size_t>(static_cast<const char*>(hit) - text_.data());
    return Match{begin, begin + find_.size()};
}

std::optional<TextSearch::Match> TextSearch::NextAscii(std::size_t from) const {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text_.data());
    const auto* needle = reinterpret_cast<const unsigned char*>(lower_.data());
    const std::size_t size = lower_.size();
    if (text_.size() < size) return std::nullopt;
    const std::size_t last = text_.size() - size;
    const unsigned char lower = needle[0];
    const auto upper = static_cast<unsigned char>(IsLetter(lower) ? lower - 32 : lower);
    for (std::size_t at = from; at <= last; ++at) {
        if (bytes[at] != lower && bytes[at] != upper) continue;
        std::size_t matched = 1;
        while (matched < size && LowerAscii(bytes[at + matched]) == needle[matched]) ++matched;
        if (matched == size) return Match{at, at + size};
    }
    return std::nullopt;
}

std::optional<TextSearch::Match> TextSearch::NextAsciiLong(std::size_t from) const {
    std::size_t matched = 0;
    for (std::size_t at = from; at < text_.size(); ++at) {
        const auto byte = static_cast<char>(LowerAscii(static_cast<unsigned char>(text_[at])));
        while (matched > 0 && byte != lower_[matched]) matched = restart_[matched];
        if (byte == lower_[matched]) ++matched;
        if (matched == lower_.size()) return Match{at + 1 - matched, at + 1};
    }
    return std::nullopt;
}

std::optional<TextSearch::Match> TextSearch::NextFolded(std::size_t from) const {
    // Case forms differ in their bytes, so the begin of a match is looked up among the last characters'
    // offsets.
    std::vector<std::size_t> begins(folded_.size());
    std::size_t matched = 0;
    std::size_t index = 0;
    for (std::size_t at = from; at < text_.size(); ++index) {
        const auto character = utf8::Read(text_, at);
        begins[index % begins.size()] = at;
        at += character.size;
        const char32_t code = unicode::Fold(character.code);
        while (matched > 0 && code != folded_[matched]) matched = restart_[matched];
        if (code == folded_[matched]) ++matched;
        if (matched == folded_.size()) return Match{begins[(index + 1) % begins.size()], at};
    }
    return std::nullopt;
}

}  // namespace sorakaze
