// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/TrackTags.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "player/ForeignText.h"

namespace sorakaze::player {
namespace {

constexpr double kReplayGainReference = -18, kR128Reference = -23;
constexpr double kR128Step = 1.0 / 256;
constexpr double kQuietest = -60, kLoudest = 0;
/// Texts that are longer are no numbers of anybody.
constexpr std::size_t kLongestNumber = 32;

std::optional<float> Plausible(double loudness) {
    // False for what is no number.
    if (!(loudness >= kQuietest && loudness <= kLoudest)) return std::nullopt;
    return static_cast<float>(loudness);
}

void SkipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
}

/// A number with or without a sign, and the text after it.
template <typename Number>
std::optional<Number> TakeNumber(std::string_view& text) {
    if (text.size() > kLongestNumber) return std::nullopt;
    SkipBlanks(text);
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    SkipBlanks(text);
    return number;
}

}  // namespace

std::optional<float> LoudnessFromReplayGain(std::string_view gain) {
    std::string text(gain);
    std::replace(text.begin(), text.end(), ',', '.');  // as some countries write it
    std::string_view rest = text;
    const auto decibels = TakeNumber<double>(rest);
    const bool hasUnit =
        rest.size() >= 2 && (rest[0] == 'd' || rest[0] == 'D') && (rest[1] == 'b' || rest[1] == 'B');
    if (hasUnit) rest.remove_prefix(2);
    SkipBlanks(rest);
    return decibels && rest.empty() ? Plausible(kReplayGainReference - *decibels) : std::nullopt;
}

std::optional<float> LoudnessFromR128Gain(std::string_view gain) {
    const auto steps = TakeNumber<int>(gain);
    return steps && gain.empty() ? Plausible(kR128Reference - *steps * kR128Step) : std::nullopt;
}

std::string TrackTags::Answer() const {
    std::string answer = text.Record();
    if (!loudness) return answer;
    char number[kLongestNumber];
    std::snprintf(number, sizeof number, "\t%.2f", static_cast<double>(*loudness));
    return answer + number;
}

TrackTags TagsFromAnswer(std::string_view answer) {
    TrackTags tags;
    const auto take = [&] {
        const std::string_view field = answer.substr(0, answer.find('\t'));
        answer.remove_prefix(std::min(field.size() + 1, answer.size()));
        return field;
    };
    TrackText& text = tags.text;
    for (std::string* field :
         {&text.title, &text.artist, &text.album, &text.titleSort, &text.artistSort, &text.albumSort})
        *field = CleanLine(take());
    const std::string last = CleanLine(take());
    std::string_view number = last;
    const auto loudness = TakeNumber<double>(number);
    if (loudness && number.empty()) tags.loudness = Plausible(*loudness);
    return tags;
}

}  // namespace sorakaze::player
