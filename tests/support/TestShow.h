// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A whole show for a test: window, fake player and the trace as lines of text.
#pragma once

#include <string>
#include <vector>

#include "show/ShowState.h"
#include "show/mainWindow.h"
#include "tests/support/FakePlayer.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {

/// Writes events as "what value value ...", each beside its tick.
class Trace : public ShowObserver {
  public:
    void OnShowEvent(const ShowEvent& event) override {
        std::string line(NameOf(event.kind));
        for (const auto& [name, value] : event.fields) {
            line += ' ';
            if (const auto* text = std::get_if<String>(&value)) line += text->Bytes();
            if (const auto* number = std::get_if<std::int32_t>(&value)) line += std::to_string(*number);
            if (const auto* real = std::get_if<double>(&value)) line += Str(*real).Bytes();
        }
        lines.push_back(line);
        ticks.push_back(event.ticks);
    }
    /// The events whose line begins so, without that beginning.
    std::vector<std::string> All(const std::string& beginning) const {
        std::vector<std::string> found;
        for (const auto& line : lines) {
            if (line.starts_with(beginning)) found.push_back(line.substr(beginning.size()));
        }
        return found;
    }
    std::int32_t TickOf(const std::string& beginning, std::size_t from = 0) const {
        for (std::size_t i = from; i < lines.size(); ++i) {
            if (lines[i].starts_with(beginning)) return ticks[i];
        }
        return -1;
    }

    std::vector<std::string> lines;
    std::vector<std::int32_t> ticks;
};

struct TestShow : TestRuntime {
    explicit TestShow(const std::string& programFile = "", std::uint64_t seed = 1,
                      sound::MixingEngine* engine = nullptr,
                      std::unique_ptr<Clock> clock = std::make_unique<StudioClock>())
        : TestRuntime(std::move(clock), engine, seed), player(runtime.Scripts()) {
        folder.Write("Programs/Show.txt", programFile);
        std::filesystem::create_directories(folder.Path() / "Sorakaze.app/Contents/Resources");
        for (int i = 1; i <= 3; ++i) {
            const auto n = std::to_string(i);
            player.tracks.push_back({"Song " + n + "\tArtist " + n + "\tAlbum " + n, 600});
        }
        window.observer = &trace;
        window.Event_Open();
    }

    bool OnAir() const { return IsOnAir(window); }

    /// Presses the button and lets the show run until it ends by itself, for an hour at most.
    void RunShow() {
        window.programStart.Push();
        RunOn();
    }
    void RunOn() {
        const std::int32_t end = Ticks() + 60 * 60 * 60;
        runtime.Events().DoEventsWhile([&] { return OnAir() && Ticks() < end; });
    }

    FakePlayer player;
    Trace trace;
    mainWindow window;
};

}  // namespace sorakaze::test
