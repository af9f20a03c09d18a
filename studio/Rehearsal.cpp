// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/Rehearsal.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <utility>

#include "app/runtime/Runtime.h"
#include "host/FailureText.h"
#include "program/check/PlacedLine.h"
#include "show/ProgramPlace.h"
#include "studio/Console.h"

namespace sorakaze::studio {
namespace {

/// A silence that lasts longer looks wrong.
constexpr std::int64_t kLongSilence = 2 * kTicksPerSecond;
/// The same variant so many times running looks like a fault.
constexpr int kManyTimes = 3;
/// What is read of a program, to compare its lines.
constexpr std::streamsize kMostBytes = 4 << 20;

struct ToText {
    std::string operator()(const String& text) const { return text.Bytes(); }
    std::string operator()(std::int32_t number) const { return std::to_string(number); }
    std::string operator()(double number) const {
        char text[32];
        std::snprintf(text, sizeof text, "%.1f", number);
        return text;
    }
};

std::string Field(const ShowEvent& event, std::string_view name) {
    const auto* value = event.Find(name);
    return value ? std::visit(ToText(), *value) : std::string();
}

/// Whether the line can have become that without an empty placeholder: "[[song]]a" can be "abba".
bool CanAllSayMore(std::string_view line, std::string_view became) {
    std::size_t at = 0;
    bool isFirst = true;
    while (true) {
        const std::size_t open = line.find("[[");
        const std::size_t close = open == std::string_view::npos ? open : line.find("]]", open);
        const bool isLast = close == std::string_view::npos;
        const std::string_view words = isLast ? line : line.substr(0, open);
        const std::size_t least = isFirst ? 0 : at + 1;
        if (isLast && !isFirst) return became.size() >= least + words.size() && became.ends_with(words);
        const std::size_t found =
            isFirst ? (became.starts_with(words) ? 0 : std::string_view::npos) : became.find(words, least);
        if (isLast) return true;
        if (found == std::string_view::npos) return false;
        at = found + words.size();
        line.remove_prefix(close + 2);
        isFirst = false;
    }
}

}  // namespace

std::vector<std::string> EmptyPlaceholders(std::string_view line, std::string_view became) {
    if (CanAllSayMore(line, became)) return {};
    std::vector<std::string> empty;
    std::size_t at = 0;  // in what became of it
    std::string_view rest = line;
    for (std::size_t open = rest.find("[["); open != std::string_view::npos; open = rest.find("[[")) {
        const std::size_t close = rest.find("]]", open);
        if (close == std::string_view::npos) break;
        const std::string_view before = rest.substr(0, open);
        const std::size_t begin = became.find(before, at);
        if (begin == std::string_view::npos) break;
        at = begin + before.size();
        const std::string_view name = rest.substr(open, close + 2 - open);
        rest.remove_prefix(close + 2);
        const std::string_view next = rest.substr(0, rest.find("[["));
        // What stands directly at the next words, or at the end, was nothing.
        if (next.empty() ? at == became.size() : became.substr(at).starts_with(next))
            empty.emplace_back(name);
    }
    return empty;
}

Rehearsal::Rehearsal(std::filesystem::path station, CommandCache& commands)
    : station_(std::move(station)), commands_(commands) {}

void Rehearsal::ReadProgram(const std::string& name) {
    std::ifstream file(station_ / "Programs" / (name + ".txt"), std::ios::binary);
    std::string text(kMostBytes, '\0');
    text.resize(static_cast<std::size_t>(file.read(text.data(), kMostBytes).gcount()));
    for (const std::string_view line : check::SplitLines(text)) {
        const auto placed = check::PlaceLine(line);
        std::string command;
        for (const auto& each : placed.commands) {
            command = ReplaceAll(check::Stored(line, each.place.text), Chr(34), "").Bytes();
            auto& [first, several] =
                variants_[std::string(words::kBlocks[static_cast<std::size_t>(each.block)])];
            several = several || (first && *first != each.variant);
            first = each.variant;
        }
        commandLines_.push_back(Trim(command).Bytes());
    }
}

void Rehearsal::OnShowEvent(const ShowEvent& event) {
    using Kind = ShowEvent::Kind;
    length_ = std::max(length_, event.ticks);
    if (event.kind == Kind::Show) {
        begin_ = Ticks() - event.ticks;
        ReadProgram(Field(event, "program"));
    }
    if (event.kind == Kind::End) ended_ = true;
    if (IsFailure(event)) return Warn(event.ticks, FailureText(event, station_));
    if (auto text = Describe(event); !text.empty()) rows_.push_back({event.ticks, std::move(text)});
    if (event.kind == Kind::Block) OnBlock(event);
    if (event.kind == Kind::Line) OnLine(event);
}

void Rehearsal::OnBlock(const ShowEvent& event) {
    Drawn& drawn = drawn_[Field(event, "name")];
    const auto variant = Field(event, "variant");
    drawn.times = drawn.variant == variant ? drawn.times + 1 : 1;
    drawn.variant = variant;
    if (drawn.times == kManyTimes && variants_[Field(event, "name")].second)
        Warn(event.ticks, Field(event, "name") + " " + variant + " comes for the third time running");
}

/// A line like "from the album ." says nothing.
void Rehearsal::OnLine(const ShowEvent& event) {
    const auto number = static_cast<std::size_t>(std::max(CurrentPlace().line, 0));
    if (number == 0 || number > commandLines_.size()) return;
    const std::string became = Field(event, "text");
    for (const auto& name : EmptyPlaceholders(commandLines_[number - 1], became))
        Warn(event.ticks, name + " stands for nothing here (line " + std::to_string(number) + "): " + became);
}

void Rehearsal::Warn(std::int32_t ticks, const std::string& what) {
    ++warnings_;
    rows_.push_back({ticks, "! " + what});
}

void Rehearsal::TakeSilences(const std::vector<Silence>& silences) {
    for (const Silence& silence : silences) {
        const auto begin = std::max<std::int64_t>(silence.begin - begin_, 0);
        const auto end = std::min<std::int64_t>(silence.end - begin_, length_);
        if (end - begin <= kLongSilence) continue;
        char text[64];
        std::snprintf(text, sizeof text, "silence for %.1f s",
                      static_cast<double>(end - begin) / kTicksPerSecond);
        Warn(static_cast<std::int32_t>(begin), text);
    }
}

std::string Rehearsal::Describe(const ShowEvent& event) const {
    using Kind = ShowEvent::Kind;
    const auto field = [&event](std::string_view name) { return Field(event, name); };
    switch (event.kind) {
        case Kind::Show:
            return field("program") + ", playing " + field("playlist");
        case Kind::Block:
            return "--- " + field("name") + " " + field("variant");
        case Kind::Say:
            return field("voice") + " (" + field("seconds") + " s): " + field("text");
        case Kind::Sayj:
            return field("voice") + ": " + field("text");
        case Kind::Sound:
            return "sound: " + std::filesystem::path(field("path")).lexically_proximate(station_).string();
        case Kind::Track:
            return "track " + field("number") + ": " + field("title");
        case Kind::Fade:
            return "  fades after " + field("position") + " s";
        case Kind::Ended:
            return "  ended after " + field("position") + " s";
        case Kind::Message:
            return "message: " + field("text");
        case Kind::End:
            return "end of the show";
        default:
            return {};
    }
}

std::vector<std::string> Rehearsal::Timetable() const {
    std::vector<const Row*> sorted;
    for (const Row& row : rows_) sorted.push_back(&row);
    std::ranges::stable_sort(sorted, {}, [](const Row* row) { return row->ticks; });
    std::vector<std::string> lines;
    for (const Row* row : sorted) {
        const double seconds = static_cast<double>(row->ticks) / kTicksPerSecond;
        std::string time = ClockText(seconds);
        if (time.size() < 7) time.insert(0, 7 - time.size(), ' ');
        const int tenth = static_cast<int>(seconds * 10) % 10;
        lines.push_back(time + "." + std::to_string(tenth) + "  " + row->text);
    }
    return lines;
}

}  // namespace sorakaze::studio
