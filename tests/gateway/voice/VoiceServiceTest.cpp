// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The service with the real program say. The sound is checked by measurement.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <future>
#include <numeric>
#include <set>
#include <sndfile.hh>
#include <thread>

#include "gateway/voice/VoiceForm.h"
#include "gateway/voice/VoiceService.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::gateway {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
namespace fs = std::filesystem;

const std::string kSentence = "こんばんは。ビートルズは、リバプール出身の四人組です。";

struct Sound {
    int rate = 0;
    std::vector<float> samples;

    double Seconds() const { return static_cast<double>(samples.size()) / rate; }
    /// dBFS.
    double Level() const {
        double power = 0;
        for (const float sample : samples) power += double{sample} * sample;
        return 10 * std::log10(power / static_cast<double>(samples.size()));
    }
    /// From 60 to 400 Hz, by autocorrelation.
    double Pitch() const {
        double best = 0;
        int period = 1;
        for (int lag = rate / 400; lag <= rate / 60; ++lag) {
            const auto late = samples.begin() + lag;
            const double sum = std::inner_product(late, samples.end(), samples.begin(), 0.0);
            if (sum > best * 1.05) best = sum, period = lag;
        }
        return static_cast<double>(rate) / period;
    }
};

class VoiceServiceTest : public testing::Test {
  protected:
    static ServiceRequest Form(const std::string& text, const std::string& speaker = "",
                               const std::string& speed = "1.0") {
        return {"POST",
                "/voice_neo/vsdemo.aspx",
                "",
                {{"__VIEWSTATE", "a"},
                 {"__EVENTVALIDATION", "b"},
                 {"RadioButton1", speaker},
                 {"WriteText", text},
                 {"SpeedText", speed},
                 {"PlayButton.x", "400"},
                 {"PlayButton.y", "25"}}};
    }

    /// The path of the sound that a page plays; empty for a page without one.
    static std::string SoundOf(const ServiceAnswer& page) {
        const auto begin = page.body.find("<audio autoplay src=\"");
        if (begin == std::string::npos) return {};
        const auto name = page.body.substr(begin + 21);
        return "/voice_neo/" + name.substr(0, name.find('"'));
    }

    std::string Speak(const ServiceRequest& form) {
        const auto page = service.Answer(form);
        EXPECT_EQ(page.status, 200);
        EXPECT_EQ(page.contentType, "text/html; charset=utf-8");
        const auto sound = service.Answer({"GET", SoundOf(page), "", {}});
        EXPECT_EQ(sound.status, 200) << page.body;
        EXPECT_EQ(sound.contentType, "audio/wav");
        return sound.body;
    }

    Sound Read(const std::string& bytes) {
        const auto file = other.Write("sound.wav", bytes);
        SndfileHandle in(file);
        EXPECT_EQ(in.format(), SF_FORMAT_WAV | SF_FORMAT_PCM_16);
        Sound sound{in.samplerate(), std::vector<float>(static_cast<std::size_t>(in.frames()))};
        in.readf(sound.samples.data(), in.frames());
        return sound;
    }

    /// The thread sanitizer of a speaker that is killed may leave a file of its own.
    bool FolderIsEmpty() const {
        const fs::directory_iterator left(folder.Path());
        return std::all_of(begin(left), end(left),
                           [](const auto& entry) { return entry.path().stem() == "tsan.rodata"; });
    }

    test::TemporaryFolder folder, other;
    VoiceService service{fs::path(SAY_PROGRAM).parent_path(), [this] { return folder.Path(); }};
};

TEST_F(VoiceServiceTest, SpeakersAreDistinctAndEquallyLoud) {
    std::set<std::string> heard;
    for (const char* speaker : {"Kyoko", "Haruka", "Sakura", "Ayumi", "Otoya", "Hattori", "Ichiro"}) {
        SCOPED_TRACE(speaker);
        const bool isWoman = heard.size() < 4;
        const std::string bytes = Speak(Form(kSentence, speaker));
        const Sound sound = Read(bytes);
        ASSERT_GT(sound.rate, 0);
        EXPECT_TRUE(heard.insert(bytes).second);
        EXPECT_NEAR(sound.Seconds(), 5.5, 2.5);
        EXPECT_NEAR(sound.Level(), -18, 1);
        EXPECT_NEAR(sound.Pitch(), isWoman ? 175 : 90, 25);
    }

    // An unknown name gets the first speaker.
    const std::string first = Speak(Form(kSentence, "Kyoko"));
    for (const char* name : {"", "kyoko", "京子", " Kyoko Sato", "1", "Nobody", "'; touch x; '"}) {
        EXPECT_EQ(Speak(Form(kSentence, name)), first) << name;
    }
    EXPECT_EQ(Speak(Form(kSentence, "男性")), Speak(Form(kSentence, "Otoya")));
    EXPECT_TRUE(FolderIsEmpty());
}

TEST_F(VoiceServiceTest, ReadsAsFastAsTheFormSays) {
    const double usual = Read(Speak(Form(kSentence))).Seconds();
    EXPECT_NEAR(Read(Speak(Form(kSentence, "", "2"))).Seconds(), usual / 2, usual / 6);
    const std::string slow = Speak(Form(kSentence, "", "0.5"));
    EXPECT_GT(Read(slow).Seconds(), usual * 1.4);
    EXPECT_EQ(Speak(Form(kSentence, "", "0.01")), slow);
}

TEST_F(VoiceServiceTest, HostileTextsAreOnlySpoken) {
    const std::string texts[] = {"'; touch '" + folder.Path().string() + "/x'; '",
                                 "$(touch " + folder.Path().string() + "/x) \\",
                                 "</audio><script>alert(1)</script>",
                                 "-o /etc/passwd",
                                 std::string("nul\0 \x1b[2J\n\xFF\xFE", 12),
                                 std::string(100'000, 'x'),
                                 std::string(60'000, '\'')};
    for (const std::string& text : texts) {
        SCOPED_TRACE(text.substr(0, 40));
        const auto page = service.Answer(Form(text));
        EXPECT_EQ(page.status, 200);
        EXPECT_LT(page.body.size(), 300u);
        EXPECT_THAT(page.body, Not(HasSubstr("script")));
        EXPECT_EQ(service.Answer({"GET", SoundOf(page), "", {}}).status, 200);
        EXPECT_TRUE(FolderIsEmpty());
    }
}

TEST_F(VoiceServiceTest, OtherFormsAndPathsAreRefused) {
    EXPECT_EQ(service.Answer({"POST", "/voice_neo/vsdemo.aspx", "", {}}).status, 400);
    for (const auto& [name, value] : Form("x").fields) {
        auto without = Form("x"), twice = Form("x");
        without.fields.erase(name);
        twice.fields.emplace(name, value);
        EXPECT_EQ(service.Answer(without).status, 400) << name;
        EXPECT_EQ(service.Answer(twice).status, 400) << name;
    }
    for (const char* speed : {"", "fast", "1.0x", "nan", "inf"})
        EXPECT_EQ(service.Answer(Form("x", "", speed)).status, 400) << speed;
    EXPECT_EQ(service.Answer({"GET", "/voice_neo/vsdemo.aspx", "", {}}).status, 405);
    for (const char* path : {"/", "/voice_neo/", "/voice_neo/speech/", "/voice_neo/speech/1.wav",
                             "/voice_neo/speech/../x.wav", "/voice_neo/speech/.wav"})
        EXPECT_EQ(service.Answer({"GET", path, "", {}}).status, 404) << path;
    const auto page = service.Answer(Form("\n \t"));
    EXPECT_EQ(page.status, 200);
    EXPECT_THAT(SoundOf(page), IsEmpty());
}

TEST_F(VoiceServiceTest, ManyAtOnceEndTheOldest) {
    std::string text;
    while (text.size() < 1000) text += kSentence;
    std::vector<std::string> sounds;
    for (int i = 0; i < 14; ++i) sounds.push_back(SoundOf(service.Answer(Form(text))));
    EXPECT_EQ(service.Answer({"GET", sounds.front(), "", {}}).status, 404);
    std::vector<std::future<ServiceAnswer>> answers;
    for (std::size_t i = sounds.size() - 3; i < sounds.size(); ++i)
        answers.push_back(std::async(std::launch::async, [&, i] {
            return service.Answer({"GET", sounds[i], "", {}});
        }));
    for (auto& answer : answers) EXPECT_EQ(answer.get().status, 200);
    service.Stop();  // waits for the ended ones too
    EXPECT_TRUE(FolderIsEmpty());
}

TEST_F(VoiceServiceTest, StopEndsWhatIsUnderWay) {
    std::string text;
    while (text.size() < 5000) text += kSentence;
    const auto sound = SoundOf(service.Answer(Form(text)));
    std::thread stopper([&] { service.Stop(); });
    EXPECT_EQ(service.Answer({"GET", sound, "", {}}).status, 503);
    stopper.join();
    EXPECT_EQ(service.Answer(Form(text)).status, 503);
    EXPECT_TRUE(FolderIsEmpty());
}

TEST(VoiceFormTest, LongTextsAreCutAfterASentence) {
    constexpr std::tuple<const char*, std::size_t, const char*> kCases[] = {
        {"あい。うえ。お", 7, "あい。うえ。お"}, {"あい。うえ。お", 6, "あい。うえ。"},
        {"あ。いうえおかき", 6, "あ。いうえお"}, {"One. Two. Three", 12, "One. Two. "},
        {"あいう、えおかき", 6, "あいう、"},     {"abcdef", 3, "abc"}};
    for (const auto& [text, most, cut] : kCases) EXPECT_EQ(CutText(text, most), cut) << text;
}

}  // namespace
}  // namespace sorakaze::gateway
