// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/Clauses.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "speech/japanese/Characters.h"

namespace sorakaze::speech {

using End = SpokenClause::End;
using Language = SpokenPart::Language;

std::optional<End> PauseOf(char32_t mark) {
    constexpr std::u32string_view kSentences = U"。．.!！♪♫\n";
    constexpr std::u32string_view kCommas = U"、，,;；:：…‥—―–~〜～()（）[]［］{}【】〔〕<>〈〉《》|｜/／";
    constexpr std::u32string_view kNames = U"「」『』\"“”";
    if (mark == '?' || mark == U'？') return End::Question;
    if (kSentences.find(mark) != std::u32string_view::npos) return End::Sentence;
    if (kCommas.find(mark) != std::u32string_view::npos) return End::Comma;
    if (kNames.find(mark) != std::u32string_view::npos) return End::Name;
    return {};
}

std::u32string_view WordOf(char32_t sign) {
    constexpr std::pair<char32_t, std::u32string_view> kSigns[] = {
        {U'&', U"アンド"}, {U'%', U"パーセント"}, {U'+', U"プラス"}, {U'@', U"アット"},
        {U'$', U"ドル"},   {U'¥', U"エン"},       {U'℃', U"ド"},     {U'×', U"カケル"}};
    const auto* found = std::find_if(std::begin(kSigns), std::end(kSigns),
                                     [&](const auto& row) { return row.first == sign; });
    return found == std::end(kSigns) ? std::u32string_view() : found->second;
}

void ClauseBuilder::AddJapanese(std::u32string_view katakana, Phrase phrase) {
    if (katakana.empty()) return;
    std::string& text = Part(Language::Japanese).text;
    if (!text.empty() && phrase == Phrase::New) text += ' ';
    text += japanese::Encode(katakana);
}

void ClauseBuilder::AddLatin(std::u32string_view words) {
    std::string& text = Part(Language::Latin).text;
    if (!text.empty()) text += ' ';
    text += japanese::Encode(words);
}

void ClauseBuilder::AddPause(End end) {
    if (!open_.parts.empty()) {
        open_.end = end;
        clauses_.push_back(std::exchange(open_, {}));
    } else if (!clauses_.empty()) {
        clauses_.back().end = std::max(clauses_.back().end, end);
    }
}

std::vector<SpokenClause> ClauseBuilder::Finish() {
    AddPause(End::Sentence);
    return std::move(clauses_);
}

SpokenPart& ClauseBuilder::Part(Language language) {
    if (open_.parts.empty() || open_.parts.back().language != language) open_.parts.push_back({language, ""});
    return open_.parts.back();
}

}  // namespace sorakaze::speech
