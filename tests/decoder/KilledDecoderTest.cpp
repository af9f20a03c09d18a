// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Decoders that somebody kills, a hundred times in all, on the air and in a render: what they played ends and
// is told of once, the next sound opens, and nothing is left of the former ones.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/sound/SoundTesting.h"
#include "tests/sound/Traces.h"
#include "tests/support/Await.h"

namespace sorakaze::sound::testing {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using test::Await;
using ::testing::SizeIs;

/// Far more than a ring holds, so that a decoder lives as long as its sound.
constexpr Frames kLength{std::int64_t{15} * kSampleRate};
constexpr int kKills = 50;  // in each test

/// How many were alive. The program's first process takes its workers along.
int KillAll(const std::vector<pid_t>& processes) {
    int killed = 0;
    for (const pid_t process : processes) killed += ::kill(process, SIGKILL) == 0;
    return killed;
}

class KilledDecoder : public ::testing::Test {
  protected:
    KilledDecoder() {
        WriteSound(file_, Constant(0.25f, static_cast<std::size_t>(kLength.count)));
        MixingEngine engine(MixingMode::Offline);
        EXPECT_NE(engine.Open(file_), nullptr);
        before_ = Traces::Now();
        before_.workers = before_.rings = 0;
    }
    ~KilledDecoder() override {
        const Traces after = Traces::Settled(before_);
        EXPECT_LE(after.descriptors, before_.descriptors);
        EXPECT_LE(after.children, before_.children);
        EXPECT_EQ(after.workers, 0);
        EXPECT_EQ(after.rings, 0);
    }

    std::shared_ptr<Voice> Open(MixingEngine& engine) {
        const auto begun = Clock::now();
        auto voice = engine.Open(file_);
        const std::chrono::duration<double, std::milli> time = Clock::now() - begun;
        slowest_ = std::max(slowest_, time.count());
        return voice;
    }
    void Report() const { RecordProperty("slowest_open_in_ms", std::to_string(slowest_)); }

    const ScratchFolder folder_;
    const std::filesystem::path file_ = folder_ / "long.wav";
    Traces before_{};
    double slowest_ = 0;
};

TEST_F(KilledDecoder, OnTheAirEndsItsSoundAndTheNextOneOpens) {
    MixingEngine engine(MixingMode::RealTime);
    std::atomic<bool> sane{true};
    std::jthread device([&](const std::stop_token& stop) {
        // Four times as fast as a device, in a device's blocks.
        while (!stop.stop_requested()) {
            // The next sound may begin while the former one fades.
            if (!(Peak(Mix(engine, 1024)) <= 0.55f)) sane = false;
            std::this_thread::sleep_for(5ms);
        }
    });
    for (int kill = 0; kill < kKills; ++kill) {
        SCOPED_TRACE(kill);
        const auto voice = Open(engine);
        ASSERT_NE(voice, nullptr);
        voice->Start();
        ASSERT_TRUE(Await([&] { return voice->Position() > Frames{}; }));
        const bool first = kill % 5 == 4;
        // The former one may not have been taken in yet.
        EXPECT_GE(KillAll(first ? ChildrenOf(::getpid()) : Workers()), 1);
        EXPECT_TRUE(Await([&] { return !voice->IsPlaying(); }));
        EXPECT_LT(voice->Position(), kLength);
        std::vector<DecoderFailure> failures;
        EXPECT_TRUE(Await([&] { return !(failures = engine.TakeFailures()).empty(); }));
        EXPECT_THAT(failures, SizeIs(1));
    }
    EXPECT_TRUE(sane);
    EXPECT_EQ(engine.Sounding(), 0);
    Report();
}

TEST_F(KilledDecoder, InARenderCostsWhatItPlayedAtMost) {
    std::atomic<int> kills{0};
    std::jthread killer([&](const std::stop_token& stop) {
        // At any moment: while a file is opened, mixed or let go.
        for (int turn = 0; kills < kKills && !stop.stop_requested(); ++turn) {
            std::this_thread::sleep_for(std::chrono::milliseconds(turn * 7 % 40));
            kills += KillAll(turn % 8 == 7 ? ChildrenOf(::getpid()) : Workers());
        }
    });
    MixingEngine engine(MixingMode::Offline);
    const auto play = [&] {
        const auto voice = Open(engine);
        if (voice) voice->Start();
        while (voice && voice->IsPlaying()) EXPECT_LE(Peak(Mix(engine, 4800)), 0.3f);
        const bool whole = voice && voice->Position() == kLength;
        EXPECT_THAT(engine.TakeFailures(), SizeIs(whole ? 0 : 1));
        return whole;
    };
    int played = 0;
    while (kills < kKills && ++played < 5000) play();
    killer.join();
    EXPECT_GE(kills, kKills);
    // As soon as nobody kills them, all is as ever.
    EXPECT_TRUE(play() || play());
    Report();
}

}  // namespace
}  // namespace sorakaze::sound::testing
