// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/JapaneseVoice.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "speech/say/JapaneseText.h"
#include "speech/say/KanaPhonemes.h"

namespace sorakaze::speech {
namespace {

/// Below this a raw sample counts as silence.
constexpr int kSilence = 60;

/// The engine divides longer texts itself, at any point.
constexpr std::size_t kLongestCall = 400;

double PauseSeconds(SpokenClause::End end) {
    switch (end) {
        case SpokenClause::End::Name:
            return 0.10;
        case SpokenClause::End::Comma:
            return 0.24;
        case SpokenClause::End::Sentence:
        case SpokenClause::End::Question:
            return 0.50;
    }
    return 0;
}

/// Of a phrase, in bytes of katakana: the engine overruns its buffer with longer words.
constexpr std::size_t kLongestPhrase = std::size_t{3} * 40;

/// Up to the blank after the phrase, or up to a mora's end in one that is too long.
std::size_t PhraseLength(std::string_view phrases) {
    constexpr std::string_view kBelongToMora = "ァィゥェォャュョヮーッン";
    std::size_t length = std::min(phrases.find(' '), phrases.size());
    if (length <= kLongestPhrase) return length;
    length = kLongestPhrase;
    while (length > kLongestPhrase / 2 &&
           kBelongToMora.find(phrases.substr(length, 3)) != std::string_view::npos) {
        length -= 3;
    }
    return length;
}

/// Between two languages in one clause.
constexpr double kChangeSeconds = 0.03;

const char* EndMark(SpokenClause::End end) {
    switch (end) {
        case SpokenClause::End::Name:
        case SpokenClause::End::Comma:
            return ",";
        case SpokenClause::End::Sentence:
            return ".";
        case SpokenClause::End::Question:
            return "?";
    }
    return "";
}

/// The engine's own pauses are removed: the marks of the text determine how long they are.
class Speaker {
  public:
    Speaker(Engine& engine, double speed, const Engine::Sink& sink)
        : engine_(engine), speed_(speed), sink_(sink) {}

    void Speak(const SpokenClause& clause) {
        for (const SpokenPart& part : clause.parts) {
            const bool last = &part == &clause.parts.back();
            const char* mark = last ? EndMark(clause.end) : "";
            if (part.language == SpokenPart::Language::Latin) {
                Call(part.text + mark, Engine::Reading::English);
            } else {
                SpeakKana(part.text, mark);
            }
            Pause(last ? PauseSeconds(clause.end) : kChangeSeconds);
        }
    }

  private:
    void SpeakKana(std::string_view phrases, const char* mark) {
        std::string codes;
        while (!phrases.empty()) {
            const std::size_t length = PhraseLength(phrases);
            const std::string phrase = KanaPhonemes(phrases.substr(0, length));
            phrases.remove_prefix(length);
            if (phrases.starts_with(' ')) phrases.remove_prefix(1);
            if (!codes.empty() && codes.size() + phrase.size() > kLongestCall) {
                Call(codes, Engine::Reading::Phonemes);
                codes.clear();
            }
            if (!phrase.empty()) codes += (codes.empty() ? "[[" : " [[") + phrase + "]]";
        }
        if (!codes.empty()) Call(codes + mark, Engine::Reading::Phonemes);
    }

    void Call(const std::string& text, Engine::Reading reading) {
        samples_.clear();
        words_.clear();
        engine_.Speak(
            text,
            [&](std::span<const std::int16_t> samples, BlockStart start) {
                if (start == BlockStart::Word) words_.push_back(samples_.size());
                samples_.insert(samples_.end(), samples.begin(), samples.end());
            },
            reading);
        const auto sounds = [](std::int16_t sample) { return std::abs(sample) >= kSilence; };
        const auto first = std::find_if(samples_.begin(), samples_.end(), sounds);
        const auto last = std::find_if(samples_.rbegin(), samples_.rend(), sounds).base();
        if (first < last) {
            Pass(static_cast<std::size_t>(first - samples_.begin()),
                 static_cast<std::size_t>(last - samples_.begin()));
        }
    }

    void Pass(std::size_t begin, std::size_t end) {
        for (const std::size_t word : words_) {
            if (word <= begin || word >= end) continue;
            sink_(std::span(samples_).subspan(begin, word - begin), BlockStart::Word);
            begin = word;
        }
        sink_(std::span(samples_).subspan(begin, end - begin), BlockStart::Word);
    }

    void Pause(double seconds) {
        samples_.assign(static_cast<std::size_t>(seconds / speed_ * engine_.SampleRate()), 0);
        sink_(samples_, BlockStart::Word);
    }

    Engine& engine_;
    const double speed_;
    const Engine::Sink& sink_;
    std::vector<std::int16_t> samples_;
    std::vector<std::size_t> words_;  ///< where they start in samples_
};

}  // namespace

void SpeakJapanese(Engine& engine, const japanese::Reader& reader, std::string_view text, double speed,
                   const Engine::Sink& sink) {
    Speaker speaker(engine, speed, sink);
    for (const SpokenClause& clause : SpokenClauses(reader, text)) speaker.Speak(clause);
}

}  // namespace sorakaze::speech
