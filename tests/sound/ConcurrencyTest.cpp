// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Many threads command voices while one mixes: for the thread sanitizer, and for what must hold whatever the
// order.
#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

#include "tests/sound/SoundTesting.h"

namespace sorakaze::sound::testing {
namespace {

/// Opens, starts, fades, stops and drops voices, some of them shared with the other threads.
void Command(MixingEngine& engine, const ScratchFolder& folder, Voice& shared, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<std::shared_ptr<Voice>> voices;
    for (int i = 0; i < 150; ++i) {
        const auto what = random() % 6;
        if (what < 2 || voices.empty()) {
            voices.push_back(engine.Open(folder / (random() % 2 ? "short.wav" : "long.mp3")));
            voices.back()->SetGain(0.5f);
            voices.back()->Start();
        } else if (what == 2) {
            voices.erase(voices.begin());
        } else if (what == 3) {
            voices.back()->Stop();
        } else if (what == 4) {
            shared.Start();
            shared.SetGain(static_cast<float>(random() % 100) / 100,
                           Frames{static_cast<int>(random() % 5000)});
        } else {
            EXPECT_GE(voices.front()->Position().count, 0);
            voices.front()->IsPlaying();
            EXPECT_GE(engine.Sounding(), 0);
        }
    }
    if (seed == 1) shared.Stop();
}

TEST(Concurrency, CommandsAgainstAMix) {
    const ScratchFolder folder;
    WriteSound(folder / "short.wav", Sine(500, 3000, 0.9f));
    WriteSound(folder / "long.mp3", Sine(700, 10 * kSampleRate, 0.9f));
    for (const Reading reading : {Reading::RealTime, Reading::Offline}) {
        MixingEngine engine(reading);
        const auto shared = engine.Open(folder / "long.mp3");
        std::atomic<bool> done{false};
        std::jthread mixing([&] {
            while (!done) EXPECT_LE(Peak(Mix(engine, 800)), 1.0f);
        });
        std::vector<std::jthread> commanding;
        for (unsigned seed = 1; seed <= 3; ++seed)
            commanding.emplace_back([&, seed] { Command(engine, folder, *shared, seed); });
        commanding.clear();
        done = true;
        mixing.join();
        EXPECT_EQ(engine.Sounding(), 0) << "dropped voices sound no more";
        Mix(engine, 800);
        EXPECT_EQ(Peak(Mix(engine, 800)), 0.0f);
    }
}

}  // namespace
}  // namespace sorakaze::sound::testing
