// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/voice/VoiceForm.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "gateway/voice/VoiceSpeakers.h"

namespace sorakaze::gateway {
namespace {

constexpr std::array kFields = {"__VIEWSTATE", "__EVENTVALIDATION", "RadioButton1", "WriteText",
                                "SpeedText",   "PlayButton.x",      "PlayButton.y"};

template <typename Number>
std::optional<Number> ReadWhole(std::string_view text) {
    Number number{};
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = failure == std::errc() && end == text.data() + text.size();
    return whole ? std::optional(number) : std::nullopt;
}

/// Whether the text ends with one of the marks.
template <std::size_t Count>
bool EndsWithAny(std::string_view text, const std::array<std::string_view, Count>& marks) {
    return std::any_of(marks.begin(), marks.end(),
                       [&](std::string_view mark) { return text.ends_with(mark); });
}

}  // namespace

std::optional<SpeechOrder> ReadVoiceForm(const std::multimap<std::string, std::string>& fields) {
    const auto value = [&](const char* name) -> const std::string& { return fields.find(name)->second; };
    for (const char* name : kFields) {
        if (fields.count(name) != 1) return {};
    }
    const auto speed = ReadWhole<double>(value("SpeedText"));
    if (!speed || !std::isfinite(*speed)) return {};
    if (!ReadWhole<int>(value("PlayButton.x")) || !ReadWhole<int>(value("PlayButton.y"))) return {};

    SpeechOrder order;
    order.voice = SpeakerVoice(value("RadioButton1"));
    order.text = CutText(value("WriteText"), kMostTextCharacters);
    for (char& byte : order.text) {
        if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F) byte = ' ';
    }
    if (order.text.find_first_not_of(' ') == std::string::npos) order.text.clear();
    char digits[16];
    std::snprintf(digits, sizeof digits, "%.2f", std::clamp(*speed, 0.5, 2.0));
    order.speed = digits;
    return order;
}

std::string_view CutText(std::string_view text, std::size_t characters) {
    constexpr std::array<std::string_view, 6> kSentenceEnds = {"。", "！", "？", ". ", "! ", "? "};
    constexpr std::array<std::string_view, 3> kPhraseEnds = {"、", ", ", " "};
    std::size_t sentence = 0, phrase = 0, count = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool inside = (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
        if (inside) continue;
        const std::string_view before = text.substr(0, at);
        if (EndsWithAny(before, kSentenceEnds)) sentence = at;
        if (EndsWithAny(before, kPhraseEnds)) phrase = at;
        if (count++ < characters) continue;
        // A cut before the half would leave too little: a sentence may be pages long.
        const std::size_t best = sentence > at / 2 ? sentence : phrase > at / 2 ? phrase : at;
        return text.substr(0, best);
    }
    return text;
}

std::string QuoteForShell(std::string_view text) {
    std::string quoted = "'";
    for (const char byte : text) {
        if (byte == '\'') {
            quoted += "'\\''";
        } else {
            quoted += byte;
        }
    }
    return quoted + "'";
}

}  // namespace sorakaze::gateway
