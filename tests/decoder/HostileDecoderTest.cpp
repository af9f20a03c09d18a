// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The engine against a decoder program that does whatever harm it can: it costs the file that it was given,
// it is told of once, and nobody else is disturbed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "tests/sound/SoundTesting.h"
#include "tests/sound/Traces.h"
#include "tests/support/Await.h"

namespace sorakaze::sound::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr std::chrono::milliseconds kStandstill{2000};

class HostileDecoder : public ::testing::TestWithParam<MixingMode> {
  protected:
    HostileDecoder() {
        folder_.Write("good", "any bytes");
        engine_ = std::make_unique<MixingEngine>(GetParam(), decoders_);
    }

    std::shared_ptr<Voice> Open(const std::string& manner) {
        return engine_->Open(folder_.Write(manner, "any bytes"));
    }
    /// Mixes on as long as it takes until the voice ends.
    void PlayOn(const Voice& voice) {
        for (int tries = 0; voice.IsPlaying() && tries < 60'000; ++tries) {
            EXPECT_LE(Peak(Mix(*engine_, 800)), 1.0f);
            if (GetParam() == MixingMode::RealTime) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_FALSE(voice.IsPlaying());
    }
    std::vector<DecoderFailure> AwaitFailures() {
        std::vector<DecoderFailure> failures;
        test::Await([&] { return !(failures = engine_->TakeFailures()).empty(); });
        return failures;
    }

    const ScratchFolder folder_;
    const std::shared_ptr<Decoders> decoders_ = std::make_shared<Decoders>(HOSTILE_DECODER, kStandstill);
    std::unique_ptr<MixingEngine> engine_;
};

TEST_P(HostileDecoder, CostsItsFileAloneAndIsToldOfOnce) {
    ASSERT_NE(Open("good"), nullptr);
    Traces before = Traces::Now();
    before.workers = before.rings = 0;
    const struct {
        const char* manner;
        bool opens;
        const char* why;  ///< empty where nothing is to be told
    } cases[] = {{"long", true, ""},
                 {"negative", true, ""},
                 {"silent", false, "too long to open"},
                 {"garbage", false, "answered nonsense"},
                 {"short", false, "answered nonsense"},
                 {"empty", false, "let go"},
                 {"ends", false, "let go"},
                 {"crashes", false, "let go"},
                 {"flood", true, "too long to decode"},
                 {"nonsense", true, "wrote nonsense"},
                 {"backwards", true, "wrote nonsense"},
                 {"stops", true, "too long to decode"},
                 {"lets go", true, "let go"},
                 {"lingers", true, ""},
                 {"program ends", false, "the decoder was ended: status 3"}};
    for (const auto& [manner, opens, why] : cases) {
        SCOPED_TRACE(manner);
        const auto good = Open("good");
        ASSERT_NE(good, nullptr);
        const auto hostile = Open(manner);
        ASSERT_EQ(hostile != nullptr, opens);
        good->Start();
        if (hostile) {
            EXPECT_EQ(hostile->Length(),
                      manner == std::string("lingers") ? std::optional(Frames{1000}) : std::nullopt);
            hostile->SetGain(0);
            hostile->Start();
        }
        const Samples heard = Mix(*engine_, 24'000);
        EXPECT_THAT(std::span(heard).subspan(heard.size() / 2), ::testing::Each(0.25f));
        if (hostile) PlayOn(*hostile);
        if (std::string(why).empty()) {
            EXPECT_THAT(engine_->TakeFailures(), IsEmpty());
        } else {
            EXPECT_THAT(AwaitFailures(), ElementsAre(Field(&DecoderFailure::why, HasSubstr(why))));
        }
    }
    Mix(*engine_, 24'000);
    // A decoder that doesn't mind that nobody wants it any more is ended.
    const Traces after = Traces::Settled(before);
    EXPECT_EQ(after.workers, 0);
    EXPECT_LE(after.descriptors, before.descriptors);
    EXPECT_EQ(after.rings, 0);
}

TEST_P(HostileDecoder, ThatTellsOfEndsOnAndOnHoldsUpNobody) {
    EXPECT_EQ(Open("statuses"), nullptr);
    const auto good = Open("good");
    ASSERT_NE(good, nullptr);
    good->Start();
    PlayOn(*good);
    EXPECT_EQ(good->Position(), Frames{48'000});
}

/// Whoever plays the file will tell.
TEST(HostileMeasuring, CostsTheMeasurementAloneAndIsNotToldOf) {
    const ScratchFolder folder;
    Decoders decoders(HOSTILE_DECODER, kStandstill);
    const auto measure = [&](const char* manner, const std::stop_token& stop) {
        return decoders.Measure(folder.Write(manner, "any bytes"), kLongestMeasurement, {},
                                Decoders::Priority::Normal, stop);
    };
    for (const char* manner : {"silent", "garbage", "short", "empty", "ends", "crashes", "flood"})
        EXPECT_EQ(measure(manner, {}), std::nullopt) << manner;
    for (const char* manner : {"progress", "silent"}) {
        std::stop_source stop;
        const std::jthread stopper([&] {
            EXPECT_TRUE(test::Await([] { return !Workers().empty(); }));
            stop.request_stop();
        });
        EXPECT_EQ(measure(manner, stop.get_token()), std::nullopt) << manner;
        EXPECT_TRUE(test::Await([] { return Workers().empty(); })) << manner;
    }
    EXPECT_THAT(decoders.TakeFailures(), IsEmpty());
    const auto good = folder.Write("good", "any bytes");
    EXPECT_NE(decoders.Open(good, Decoders::Pace::Fast), nullptr);
}

INSTANTIATE_TEST_SUITE_P(, HostileDecoder, ::testing::Values(MixingMode::RealTime, MixingMode::Offline),
                         [](const auto& each) {
                             return each.param == MixingMode::RealTime ? "OnTheAir" : "InARender";
                         });

}  // namespace
}  // namespace sorakaze::sound::testing
