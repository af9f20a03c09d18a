// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/Rehearsal.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <utility>

#include "app/runtime/Runtime.h"
#include "host/FailureText.h"
#include "show/ProgramPlace.h"
#include "studio/Console.h"

namespace sorakaze::studio {
namespace {

/// A silence that lasts longer looks wrong.
constexpr std::int64_t kLongSilence = 2 * kTicksPerSecond;
/// The same variant so many times running looks like a fault.
constexpr int kManyTimes = 3;
/// What is read of a program's lines, to compare them.
constexpr std::size_t kMostLines = 20'000, kLongestLine = 4'000;

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

}  // namespace

std::vector<std::string> EmptyPlaceholders(std::string_view line, std::string_view became) {
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
    for (std::string line; programLines_.size() < kMostLines && std::getline(file, line);) {
        while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t'))
            line.pop_back();
        programLines_.push_back(line.substr(0, kLongestLine));
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
    if (event.kind == Kind::Failed) return Warn(event.ticks, FailureText(event, station_));
    if (auto text = Describe(event); !text.empty()) rows_.push_back({event.ticks, std::move(text)});
    if (event.kind == Kind::Block) OnBlock(event);
    if (event.kind == Kind::Line) OnLine(event);
}

void Rehearsal::OnBlock(const ShowEvent& event) {
    Drawn& drawn = drawn_[Field(event, "name")];
    const auto variant = Field(event, "variant");
    drawn.times = drawn.variant == variant ? drawn.times + 1 : 1;
    drawn.variant = variant;
    if (drawn.times == kManyTimes)
        Warn(event.ticks, Field(event, "name") + " " + variant + " comes for the third time running");
}

/// A line like "from the album ." says nothing.
void Rehearsal::OnLine(const ShowEvent& event) {
    const auto number = static_cast<std::size_t>(std::max(CurrentPlace().line, 0));
    if (number == 0 || number > programLines_.size()) return;
    const std::string became = Field(event, "text");
    const std::string& line = programLines_[number - 1];
    // The key and the variant stand before the first comma.
    const auto comma = line.find(',');
    const auto begin = comma == std::string::npos ? comma : line.find_first_not_of(" \t", comma + 1);
    if (begin == std::string::npos) return;
    for (const auto& name : EmptyPlaceholders(std::string_view(line).substr(begin), became))
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
