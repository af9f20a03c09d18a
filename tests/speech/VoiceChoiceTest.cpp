// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// How the candidates of a voice are tried in turn, with engines that fail in every way.
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

#include "speech/say/voices/SeparateEngine.h"
#include "speech/say/voices/SpeakFirst.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {
namespace {

namespace fs = std::filesystem;
using namespace speech;

enum class Does {
    Speak,
    FailAtStart,
    FailAtOnce,
    FailHalfWay,
    ChangeRate,
    StaySilent,
    SayNothing,
    GoOn,
    Crash,
    Hang,
    Eat
};

class FakeEngine : public VoiceEngine {
  public:
    explicit FakeEngine(Does what) : what_(what) {
        if (what == Does::FailAtStart) throw std::runtime_error("it isn't installed");
    }
    void Speak(const std::string& /*text*/, const SpeechSink& sink) override {
        std::vector<std::int16_t> second(16'000);
        for (std::size_t i = 0; what_ != Does::StaySilent && i < second.size(); ++i)
            second[i] = i % 40 < 20 ? 9'000 : -9'000;
        if (what_ == Does::FailAtOnce) throw std::runtime_error("it crashed");
        if (what_ != Does::SayNothing) sink(16'000, second, BlockStart::Word);
        if (what_ == Does::FailHalfWay) throw std::runtime_error("it crashed");
        if (what_ == Does::ChangeRate) sink(22'050, second, BlockStart::Word);
        if (what_ == Does::Crash) std::raise(SIGKILL);
        while (what_ == Does::Hang) pause();
        for (std::vector<std::string> eaten; what_ == Does::Eat;) eaten.emplace_back(1u << 20, 'x');
        while (what_ == Does::GoOn) sink(16'000, second, BlockStart::WithinWord);
    }

  private:
    Does what_;
};

struct FakeSource : VoiceSource {
    std::vector<VoiceCandidate> named, others;

    static VoiceCandidate Candidate(const std::string& name, Does what) {
        return {name, "fake", "en-gb", 0, {}, [what](double) { return std::make_unique<FakeEngine>(what); }};
    }
    std::vector<VoiceCandidate> Named(const std::string& name) const override {
        return name == "Known" ? named : std::vector<VoiceCandidate>();
    }
    std::vector<VoiceCandidate> ForLanguage(const std::string& language) const override {
        return MainLanguage(language) == "en" ? others : std::vector<VoiceCandidate>();
    }
};

TEST(VoiceChoiceTest, TheFirstThatSpeaksIsTheOnlyOneHeard) {
    const struct {
        Does first;
        std::string text, why;
    } cases[] = {{Does::Speak, "hello", ""},
                 {Does::FailAtStart, "hello", "it isn't installed"},
                 {Does::FailAtOnce, "hello", "it crashed"},
                 {Does::FailHalfWay, "hello", "it crashed"},
                 {Does::ChangeRate, "hello", "the voice changes its sample rate"},
                 {Does::StaySilent, "hello", "it made no sound"},
                 {Does::SayNothing, "hello", "it made no sound"},
                 {Does::FailAtStart, " ", ""}};
    for (const auto& [first, text, why] : cases) {
        SCOPED_TRACE(why + " of case " + std::to_string(static_cast<int>(first)));
        auto source = std::make_unique<FakeSource>();
        source->named = {FakeSource::Candidate("first", first)};
        source->others = {FakeSource::Candidate("first", first),
                          FakeSource::Candidate("second", Does::Speak)};
        VoiceCatalogue catalogue;
        catalogue.Add(std::make_unique<FakeSource>());
        catalogue.Add(std::move(source));
        const TemporaryFolder folder;
        const fs::path file = folder.Path() / "speech.aiff";
        Recorder recorder(file);
        const auto result = SpeakFirst(
            catalogue.Choose("Known"), [&](const std::string&) { return text; }, 1, recorder);
        EXPECT_EQ(result.used.name, why.empty() ? "first" : "second");
        ASSERT_EQ(result.passedOver.size(), why.empty() ? 0U : 1U);
        EXPECT_EQ(why.empty() ? why : result.passedOver[0].why, why);
        // A second of 16 bits at 16 kHz, with what the leveller puts at its ends; or a short silence.
        EXPECT_NEAR(static_cast<double>(fs::file_size(file)), text == " " ? 4'500 : 40'000, 9'000);
        EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 1);
    }
}

TEST(VoiceChoiceTest, TheLastOneEndsTheMatter) {
    const struct {
        Does what;
        bool fails, cut;
    } cases[] = {
        {Does::StaySilent, false, false}, {Does::FailHalfWay, true, false}, {Does::GoOn, false, true}};
    for (const auto& [what, fails, cut] : cases) {
        SCOPED_TRACE(static_cast<int>(what));
        const TemporaryFolder folder;
        const fs::path file = folder.Path() / "speech.aiff";
        const VoiceChoice choice{"Known", {FakeSource::Candidate("only", what)}};
        const auto text = [](const std::string&) { return "hello"; };
        {
            Recorder recorder(file);
            if (fails) {
                EXPECT_THROW(SpeakFirst(choice, text, 1, recorder), std::runtime_error);
            } else {
                EXPECT_EQ(SpeakFirst(choice, text, 1, recorder).cut, cut);
            }
        }
        EXPECT_EQ(fs::exists(file), !fails);
    }
    Recorder recorder("nowhere.aiff");
    EXPECT_THROW(SpeakFirst({"Nobody", {}}, {}, 1, recorder), std::runtime_error);
}

TEST(SeparateEngineTest, AnEngineEndsAlone) {
    const struct {
        Does what;
        std::string why;
    } cases[] = {{Does::Speak, ""},
                 {Does::SayNothing, ""},
                 {Does::FailAtStart, "it isn't installed"},
                 {Does::FailHalfWay, "it crashed"},
                 {Does::Crash, "the engine crashed (Killed)"},
                 {Does::Hang, "it took too long"},
                 {Does::Eat, "it took too much memory"}};
    for (const auto& [what, why] : cases) {
        EngineBounds bounds{std::chrono::seconds(60), std::chrono::seconds(60), 256u << 20};
        if (what == Does::Hang) bounds.wholeText = std::chrono::milliseconds(1);
        SeparateEngine engine([does = what] { return std::make_unique<FakeEngine>(does); }, bounds);
        std::size_t heard = 0;
        std::string failure;
        try {
            engine.Speak("hello", [&](int rate, std::span<const std::int16_t> samples, BlockStart) {
                EXPECT_EQ(rate, 16'000);
                heard += samples.size();
            });
        } catch (const std::runtime_error& problem) {
            failure = problem.what();
        }
        EXPECT_EQ(failure, why);
        EXPECT_EQ(heard, what == Does::SayNothing || what == Does::FailAtStart ? 0U : 16'000U) << why;
    }
    SeparateEngine endless([] { return std::make_unique<FakeEngine>(Does::GoOn); }, {});
    EXPECT_THROW(endless.Speak("", [](int, auto, BlockStart) { throw SpeechCut(); }), SpeechCut);
}

}  // namespace
}  // namespace sorakaze::test
