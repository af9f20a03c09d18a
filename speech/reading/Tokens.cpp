// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/reading/Tokens.h"

#include <algorithm>

#include "base/Ascii.h"
#include "base/Utf8.h"

namespace sorakaze::reading {
namespace {

using Kind = Token::Kind;

/// How far Next and Previous look, so that a pass over a text stays linear.
constexpr std::size_t kFarthest = 8;

bool IsDigit(char32_t code) {
    return code >= U'0' && code <= U'9';
}

Kind KindOf(char32_t code) {
    if (code == U' ' || code == 0xA0) return Kind::Blank;
    if (IsDigit(code)) return Kind::Number;
    if (IsJapanese(code)) return Kind::Japanese;
    return IsLetter(code) ? Kind::Word : Kind::Mark;
}

/// An apostrophe within a word belongs to it.
bool JoinsLetters(std::string_view text, std::size_t at) {
    return text[at] == '\'' && at > 0 && at + 1 < text.size() && ascii::IsLetter(text[at - 1]) &&
           IsLetter(utf8::Read(text, at + 1).code);
}

}  // namespace

bool IsJapanese(char32_t code) {
    return (code >= 0x3005 && code <= 0x3007) || (code >= 0x3040 && code <= 0x30FF && code != U'・') ||
           (code >= 0x3100 && code <= 0xD7FF) || (code >= 0xF900 && code <= 0xFAFF) ||
           (code >= 0xFF66 && code <= 0xFFDF) || (code >= 0x20000 && code <= 0x3FFFF);
}

bool IsLetter(char32_t code) {
    if (code < 0x80) return (code >= U'a' && code <= U'z') || (code >= U'A' && code <= U'Z');
    if (code == 0xB5) return true;
    if (code < 0xC0 || code == 0xD7 || code == 0xF7) return false;
    return (code < 0x2000 || (code >= 0x2C00 && code < 0x2E00) || (code >= 0xA640 && code < 0xAC00) ||
            (code >= 0xFB00 && code < 0xFE00) || (code >= 0x10000 && code < 0x1D000)) &&
           !IsJapanese(code);
}

bool IsOneOf(std::string_view word, std::string_view list) {
    if (word.empty()) return false;
    for (std::size_t at = list.find(word); at != list.npos; at = list.find(word, at + 1)) {
        if (at > 0 && list[at - 1] == ' ' && at + word.size() < list.size() && list[at + word.size()] == ' ')
            return true;
    }
    return false;
}

Sentence::Sentence(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const auto [code, size] = utf8::Read(text, at);
        const bool joins = !tokens_.empty() && tokens_.back().kind == Kind::Word && JoinsLetters(text, at);
        const Kind kind = joins ? Kind::Word : KindOf(code);
        const std::string_view bytes = text.substr(at, size);
        if (kind == Kind::Mark || tokens_.empty() || tokens_.back().kind != kind) {
            tokens_.push_back({kind, std::string(bytes), {}});
        } else {
            tokens_.back().text += bytes;
        }
        at += size;
    }
    for (Token& token : tokens_) token.lower = ascii::Lowered(token.text);
}

std::string Sentence::Text() const {
    std::string text;
    for (const Token& token : tokens_) text += token.text;
    return text;
}

std::size_t Sentence::Next(std::size_t index) const {
    for (std::size_t step = 1; step <= kFarthest && index + step < tokens_.size(); ++step) {
        if (!Is(index + step, Kind::Blank)) return index + step;
    }
    return kNone;
}

std::size_t Sentence::Previous(std::size_t index) const {
    for (std::size_t step = 1; step <= kFarthest && step <= index; ++step) {
        if (!Is(index - step, Kind::Blank)) return index - step;
    }
    return kNone;
}

bool Sentence::IsEdge(std::size_t index) const {
    if (index >= tokens_.size()) return true;
    const Token& token = tokens_[index];
    return token.kind == Kind::Blank && token.text.size() >= 2;
}

void Sentence::Replace(std::size_t index, Token::Kind kind, std::string text) {
    if (index >= tokens_.size()) return;
    std::string lower = ascii::Lowered(text);
    tokens_[index] = {kind, std::move(text), std::move(lower)};
}

void Sentence::ReplaceByWords(std::size_t index, std::string_view words) {
    const auto touches = [&](std::size_t other) {
        return Is(other, Kind::Word) || Is(other, Kind::Number) || Is(other, Kind::Japanese);
    };
    const std::string_view before = index > 0 && touches(index - 1) ? " " : "";
    const std::string_view after = touches(index + 1) ? " " : "";
    Replace(index, Kind::Word, std::string(words));
    tokens_[index].text = std::string(before) + std::string(words) + std::string(after);
}

}  // namespace sorakaze::reading
