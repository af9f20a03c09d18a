// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/XmlRepair.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

namespace sorakaze::player {

namespace {

constexpr std::string_view kCharacterDataBegins = "<![CDATA[";
constexpr std::size_t kLongestReference = 12;

bool IsXmlCharacter(std::uint32_t code) {
    if (code < 0x20) return code == '\t' || code == '\n' || code == '\r';
    return code <= 0x10FFFF && !(code >= 0xD800 && code <= 0xDFFF) && code != 0xFFFE && code != 0xFFFF;
}

/// `name` is what is between the ampersand and the semicolon.
bool IsReference(std::string_view name) {
    constexpr std::array<std::string_view, 5> kNames = {"amp", "lt", "gt", "quot", "apos"};
    if (!name.starts_with('#')) return std::find(kNames.begin(), kNames.end(), name) != kNames.end();
    name.remove_prefix(1);
    const bool hexadecimal = name.starts_with('x');
    if (hexadecimal) name.remove_prefix(1);
    std::uint32_t code = 0;
    const auto [end, error] =
        std::from_chars(name.data(), name.data() + name.size(), code, hexadecimal ? 16 : 10);
    return error == std::errc{} && end == name.data() + name.size() && IsXmlCharacter(code);
}

/// Whether `text`, which begins with an ampersand, begins with a reference; empty if more bytes are needed.
std::optional<bool> BeginsWithReference(std::string_view text) {
    const auto end = text.substr(0, kLongestReference).find(';');
    if (end == std::string_view::npos && text.size() < kLongestReference) return std::nullopt;
    return end != std::string_view::npos && IsReference(text.substr(1, end - 1));
}

bool IsControl(char character) {
    return static_cast<unsigned char>(character) < 0x20 && character != '\n' && character != '\t' &&
           character != '\r';
}

/// How many of the first characters need no repair.
std::size_t PlainLength(std::string_view text, bool inCharacterData) {
    const auto isOrdinary = [&](char character) {
        return !IsControl(character) && character != (inCharacterData ? ']' : '<') && character != '&';
    };
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isOrdinary) - text.begin());
}

}  // namespace

std::string XmlRepair::Next(std::string_view piece) {
    const std::string text = std::exchange(held_, {}).append(piece);
    std::string repaired;
    repaired.reserve(text.size() + text.size() / 16);
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (matched_ == 0) {
            const std::size_t plain = PlainLength(std::string_view(text).substr(at), inCharacterData_);
            repaired.append(text, at, plain);
            at += plain;
            if (at == text.size()) break;
        }
        const char character = text[at];
        repaired += IsControl(character) ? ' ' : character;
        if (character == '&' && !inCharacterData_) {
            const auto reference = BeginsWithReference(std::string_view(text).substr(at));
            if (!reference) {
                repaired.pop_back();
                held_ = text.substr(at);
                break;
            }
            if (!*reference) repaired += "amp;";
        }
        Follow(character);
    }
    return repaired;
}

void XmlRepair::Follow(char character) {
    if (inCharacterData_) {
        inCharacterData_ = !(character == '>' && matched_ == 2);
        matched_ = inCharacterData_ && character == ']' ? std::min<std::size_t>(matched_ + 1, 2) : 0;
        return;
    }
    if (character != kCharacterDataBegins[matched_]) matched_ = 0;
    if (character == kCharacterDataBegins[matched_]) ++matched_;
    inCharacterData_ = matched_ == kCharacterDataBegins.size();
    if (inCharacterData_) matched_ = 0;
}

}  // namespace sorakaze::player
