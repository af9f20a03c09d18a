// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/ShowSummary.h"

#include "app/runtime/Clock.h"
#include "studio/Console.h"

namespace sorakaze::studio {
namespace {

constexpr std::size_t kMostNamed = 5;

std::string Counted(int count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

}  // namespace

void ShowSummary::OnShowEvent(const ShowEvent& event) {
    ticks_ = event.ticks;
    if (event.kind == ShowEvent::Kind::Credit) AddCredit(event);
    if (event.kind != ShowEvent::Kind::Failed) return;
    const auto* const what = event.Find("what");
    if (!what || !(std::get<String>(*what) == "track")) ++otherFailures_;
}

void ShowSummary::OnTrack(const player::TrackEvent& event) {
    using What = player::TrackEvent::What;
    if (event.what == What::Started) ++played_;
    if (event.what == What::Failed) ahead_.emplace(event.playlist, event.number);
    if (event.what != What::Skipped) return;
    ahead_.erase({event.playlist, event.number});
    ++unplayable_;
    if (named_.size() < kMostNamed) named_.push_back(event.path.filename().string() + " (" + event.why + ")");
}

std::string ShowSummary::Text() const {
    std::string text = "Done: " + ClockText(ticks_ / static_cast<double>(kTicksPerSecond)) + ", " +
                       Counted(Tracks(), "track", "tracks");
    if (unplayable_ > 0) {
        text += ", " + std::to_string(unplayable_) + " could not be played: ";
        for (const auto& name : named_) text += (&name == &named_.front() ? "" : ", ") + name;
        const auto more = static_cast<std::size_t>(unplayable_) - named_.size();
        if (more > 0) text += " and " + std::to_string(more) + " more";
    }
    if (!ahead_.empty())
        text += "; " + Counted(static_cast<int>(ahead_.size()), "track", "tracks") +
                " of those to come can't be played";
    if (otherFailures_ > 0) text += "; " + Counted(otherFailures_, "other failure", "other failures");
    return text;
}

void ShowSummary::AddCredit(const ShowEvent& event) {
    std::string line;
    for (const char* name : {"title", "address", "licence"}) {
        const auto* const value = event.Find(name);
        const std::string text = value ? std::get<String>(*value).Bytes() : std::string();
        if (!text.empty()) line += (line.empty() ? "" : ", ") + text;
    }
    if (!line.empty()) credits_.push_back(line);
}

std::string ShowSummary::Verdict() const {
    if (unplayable_ * 2 <= Tracks()) return {};
    const std::string all = std::to_string(Tracks());
    if (played_ > 0)
        return "More than half of the tracks could not be played: " + std::to_string(unplayable_) + " of " +
               all + ".";
    return Tracks() == 1 ? "The only track could not be played."
                         : "None of the " + all + " tracks could be played.";
}

}  // namespace sorakaze::studio
