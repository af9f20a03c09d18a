// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Score.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <stdexcept>
#include <string>

namespace sorakaze::station {
namespace {

[[noreturn]] void Fail(std::string_view token) {
    throw std::invalid_argument("a score holds \"" + std::string(token) + "\"");
}

double Number(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) Fail(text);
    return value;
}

double Pitch(std::string_view name) {
    constexpr std::string_view kLetters = "C D EF G A B";
    const auto step = name.empty() ? std::string_view::npos : kLetters.find(name[0]);
    if (step == std::string_view::npos) Fail(name);
    double pitch = static_cast<double>(step);
    std::size_t at = 1;
    for (; at < name.size() && (name[at] == '#' || name[at] == 'b'); ++at) pitch += name[at] == '#' ? 1 : -1;
    return pitch + 12 * (Number(name.substr(at)) + 1);
}

/// The words of a text between blanks.
std::vector<std::string_view> Words(std::string_view text) {
    std::vector<std::string_view> words;
    std::size_t at = 0;
    while ((at = text.find_first_not_of(" \n", at)) != std::string_view::npos) {
        const std::size_t end = std::min(text.find_first_of(" \n", at), text.size());
        words.push_back(text.substr(at, end - at));
        at = end;
    }
    return words;
}

}  // namespace

Line Notes(std::string_view text, double beat) {
    Line line;
    double beats = 1;
    for (std::string_view word : Words(text)) {
        if (word == "|") continue;
        double velocity = 0.75;
        if (word.back() == '^') velocity = 0.95;
        if (word.back() == ',') velocity = 0.5;
        if (velocity != 0.75) word.remove_suffix(1);
        if (const auto colon = word.find(':'); colon != std::string_view::npos) {
            beats = Number(word.substr(colon + 1));
            word = word.substr(0, colon);
        }
        for (bool more = word != "r"; more;) {
            const auto plus = word.find('+');
            line.push_back({beat, beats, Pitch(word.substr(0, plus)), velocity});
            more = plus != std::string_view::npos;
            if (more) word.remove_prefix(plus + 1);
        }
        beat += beats;
    }
    return line;
}

Line Steps(std::string_view text, double stepBeats, double beat) {
    Line line;
    for (const char step : text) {
        if (step == ' ' || step == '|') continue;
        const double velocity = step == 'X' ? 1.0 : step == 'x' ? 0.75 : step == 'o' ? 0.45 : 0.0;
        if (velocity == 0 && step != '.') Fail(text);
        if (velocity > 0) line.push_back({beat, stepBeats, 60, velocity});
        beat += stepBeats;
    }
    return line;
}

Line Repeat(const Line& line, double beats, int times) {
    Line all;
    for (int i = 0; i < times; ++i) all = std::move(all) + Later(line, i * beats);
    return all;
}

Line Later(Line line, double beats) {
    for (Note& note : line) note.beat += beats;
    return line;
}

Line Transposed(Line line, double semitones) {
    for (Note& note : line) note.pitch += semitones;
    return line;
}

Line Softer(Line line, double factor) {
    for (Note& note : line) note.velocity *= factor;
    return line;
}

Line operator+(Line first, const Line& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

double EndOf(const Line& line) {
    double end = 0;
    for (const Note& note : line) end = std::max(end, note.beat + note.beats);
    return end;
}

double Tempo::Seconds(double beat) const {
    const double whole = std::floor(beat);
    const double part = beat - whole;
    const double swung = part < 0.5 ? part * 2 * swing : swing + (part - 0.5) * 2 * (1 - swing);
    const double place = whole + swung;
    const double late = std::max(0.0, place - slowFrom);
    return place * 60 / beatsPerMinute + slowing * late * late / 2;
}

}  // namespace sorakaze::station
