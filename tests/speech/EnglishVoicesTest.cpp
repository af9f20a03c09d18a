// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The English people: who has which voice, and what Flite does with texts that aren't made for it.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <tuple>

#include "speech/say/VoiceNames.h"
#include "speech/say/voices/BuiltInVoices.h"
#include "speech/say/voices/EnglishText.h"
#include "speech/say/voices/FliteNames.h"
#include "speech/say/voices/HtsVoice.h"
#include "speech/say/voices/SeparateEngine.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::test {
namespace {

using namespace speech;

std::vector<std::int16_t> Spoken(VoiceEngine& engine, const std::string& text) {
    std::vector<std::int16_t> all;
    engine.Speak(text, [&](int, std::span<const std::int16_t> samples, BlockStart) {
        all.insert(all.end(), samples.begin(), samples.end());
    });
    return all;
}

/// Languages, and voices that aren't people's.
const std::set<std::string_view> kNoPeople{"english", "english-us", "english-uk",
                                           "british", "whisper",    "zarvox"};

TEST(EnglishVoicesTest, EveryPersonSpeaksLikeNobodyElse) {
    const BuiltInVoices voices("/tmp", [](std::string_view) {});
    std::map<std::tuple<std::string, double, double>, std::string_view> known;
    for (const std::string_view name : FirstNames()) {
        const auto person = *FindFirstName(name);
        const auto look = FindFliteLook(name);
        const bool isEnglish = person.voice.starts_with("gmw/en") && !kNoPeople.contains(name);
        EXPECT_EQ(isEnglish, look.has_value()) << name;
        if (!look) continue;
        const auto [same, isNew] = known.emplace(std::tuple(look->voice, look->pitch, look->size), name);
        EXPECT_TRUE(isNew) << name << " sounds like " << same->second;
        const auto candidates = voices.Named(std::string(name));
        const bool hasHts = FindHtsLook(name) && HasHts();
        ASSERT_EQ(candidates.size(), hasHts ? 3U : 2U) << name;
        EXPECT_EQ(candidates[0].engine, hasHts ? "HTS" : "Flite") << name;
        EXPECT_EQ(candidates.back().engine, "espeak-ng") << name;
    }
}

TEST(EnglishVoicesTest, TextsBecomeWhatFliteReads) {
    const std::pair<const char*, const char*> texts[] = {
        {"Caf\u00e9  \u201cdel\u201d <b>mar</b>", "Cafe del b mar /b "},
        {"[[h@'loU]] {x} a|b\\c", "h@'loU x a b c"},
        {"\u041c\u043e\u0441\u043a\u0432\u0430!", "moskva!"},
        {"\u266a \xf0\x9f\x98\x80", ""},
        {"rock \u2019n\u2019 roll \u2013 live", "rock 'n' roll - live"}};
    for (const auto& [text, english] : texts) EXPECT_EQ(EnglishText(text), english);
    const auto parts = SpeakableParts("One, two. Three four five, six " + std::string(50, 'x'), 20);
    EXPECT_EQ(parts, (std::vector<std::string>{"One, two.", "Three four five,", "six", std::string(20, 'x'),
                                               std::string(20, 'x'), std::string(10, 'x')}));
}

TEST(EnglishVoicesTest, FliteEndsWithAnyText) {
    for (const char* name : {"alex", "samantha", "fred"}) {
        FliteEngine engine(*FindFliteLook(name), 1);
        EXPECT_GT(Spoken(engine, "hello there").size(), 5'000U);
        EXPECT_TRUE(Spoken(engine, "").empty());
        EXPECT_TRUE(Spoken(engine, " ... !!! \u266a").empty());
    }
    FliteEngine engine(*FindFliteLook("alex"), 2);
    for (const std::string text : {"9", "x", "'", "$1.", "a.b.", "-", "mcmxc ", "1/2 ", "&;"}) {
        std::string many;
        while (many.size() < 420) many += text;
        Spoken(engine, many);
        Spoken(engine, text);
    }
    TemporaryFolder folder;
    folder.Write("broken.flitevox", "CMU_FLITE_CG_VOXDATA-v2.0\nlanguage eng\n" + std::string(1'000, '\xFF'));
    for (const std::string file : {"broken.flitevox", "none.flitevox"}) {
        const std::string path = folder.Path() / file;
        SeparateEngine separate([&] { return std::make_unique<FliteEngine>(FliteLook{path}, 1); },
                                EngineBounds());
        EXPECT_THROW(Spoken(separate, "hello"), std::runtime_error) << file;
    }
}

TEST(EnglishVoicesTest, HtsSpeaksAtEverySpeed) {
    if (!HasHts()) GTEST_SKIP() << "festvox-us-slt-hts isn't installed";
    TemporaryFolder folder;
    const auto spoken = [&](double speed, const std::string& text) {
        HtsVoice voice(*FindHtsLook("susan"), speed, folder.Path());
        return Spoken(voice, text).size();
    };
    const auto usual = spoken(1, "good evening (and) \"welcome\" to the show");
    EXPECT_NEAR(static_cast<double>(spoken(2, "good evening (and) \"welcome\" to the show")), usual * 0.5,
                usual * 0.1);
    EXPECT_GT(spoken(1, ")(quit) \\ $(id) \xff"), 1'000U);
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

}  // namespace
}  // namespace sorakaze::test
