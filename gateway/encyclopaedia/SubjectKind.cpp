// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/SubjectKind.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <initializer_list>
#include <span>

#include "base/Ascii.h"

namespace sorakaze::gateway {
namespace {

using namespace std::string_view_literals;

/// How an English category of people ends, in the singular, and what an occupation is called.
constexpr std::string_view kEnglishProfessions[] = {
    "musician",        "singer",       "songwriter",
    "rapper",          "guitarist",    "bassist",
    "drummer",         "pianist",      "keyboardist",
    "organist",        "violinist",    "violist",
    "cellist",         "saxophonist",  "trumpeter",
    "trombonist",      "clarinetist",  "clarinettist",
    "flautist",        "flutist",      "harpist",
    "percussionist",   "accordionist", "banjoist",
    "mandolinist",     "sitarist",     "harmonica player",
    "vocalist",        "soprano",      "contralto",
    "tenor",           "baritone",     "composer",
    "harpsichordist",  "lutenist",     "multi-instrumentalist",
    "record producer", "bandleader",   "beatboxer",
    "turntablist",     "fiddler",      "vibraphonist",
    "double-bassist",  "oboist",       "bassoonist",
    "disc jockey",     "dj",           "crooner"};

constexpr std::string_view kEnglishGroups[] = {
    "music group",     "musical group", "rock group",       "pop group",
    "metal group",     "punk group",    "hip hop group",    "hip-hop group",
    "vocal group",     "girl group",    "idol group",       "boy band",
    "rock band",       "metal band",    "punk band",        "jazz band",
    "pop band",        "brass band",    "big band",         "military band",
    "jug band",        "ska band",      "tribute band",     "musical quartet",
    "musical quintet", "musical trio",  "musical duo",      "musical sextet",
    "musical septet",  "musical octet", "musical ensemble", "musical collective",
    "music duo",       "music trio",    "hip hop duo",      "hip-hop duo",
    "pop duo",         "rock duo",      "jazz ensemble",    "string quartet",
    "orchestra",       "choir",         "music ensemble",   "music collective",
    "dj duo"};

/// A Japanese category ends with what its members are.
constexpr std::string_view kJapaneseProfessions[] = {"歌手",
                                                     "ミュージシャン",
                                                     "音楽家",
                                                     "シンガーソングライター",
                                                     "ギタリスト",
                                                     "ベーシスト",
                                                     "ドラマー",
                                                     "ピアニスト",
                                                     "キーボーディスト",
                                                     "ラッパー",
                                                     "作曲家",
                                                     "ボーカリスト",
                                                     "奏者",
                                                     "ヴァイオリニスト",
                                                     "チェリスト",
                                                     "声楽家",
                                                     "音楽プロデューサー",
                                                     "DJ",
                                                     "ディスクジョッキー",
                                                     "パーカッショニスト",
                                                     "サクソフォニスト",
                                                     "オルガニスト",
                                                     "指揮者"};

constexpr std::string_view kJapaneseGroups[] = {"バンド",
                                                "音楽グループ",
                                                "アイドルグループ",
                                                "アイドル・グループ",
                                                "音楽ユニット",
                                                "女性アイドル",
                                                "男性アイドル",
                                                "オーケストラ",
                                                "楽団",
                                                "合唱団",
                                                "ヒップホップ・グループ",
                                                "ヒップホップグループ",
                                                "コーラス・グループ",
                                                "コーラスグループ",
                                                "デュオ",
                                                "ボーイ・バンド",
                                                "ガールズグループ",
                                                "四重奏団"};

/// Whether the text is the plural of one of the words, or ends with one: "rock bands" ends with that of
/// "band".
bool EndsWithPluralOf(std::string_view text, std::span<const std::string_view> words) {
    if (!text.ends_with('s')) return false;
    text.remove_suffix(1);
    return std::ranges::any_of(words, [&](std::string_view word) {
        return text.ends_with(word) &&
               (text.size() == word.size() || text[text.size() - word.size() - 1] == ' ' ||
                text[text.size() - word.size() - 1] == '-');
    });
}

/// People and groups are in categories that say more than "Choirs", which is of the article "Choir".
bool IsOfTheWordItself(std::string_view category, std::span<const std::string_view> words) {
    return std::ranges::any_of(words, [&](std::string_view word) {
        return category == word ||
               (category.size() == word.size() + 1 && category.starts_with(word) && category.ends_with('s'));
    });
}

bool EndsWith(std::string_view text, std::span<const std::string_view> words) {
    return std::ranges::any_of(words, [&](std::string_view word) { return text.ends_with(word); });
}

/// Whether one of the words is in the text as a whole word. ASCII.
bool HasWord(std::string_view text, std::span<const std::string_view> words) {
    const auto isLetter = [&](std::size_t at) {
        return at < text.size() && std::isalpha(static_cast<unsigned char>(text[at]));
    };
    return std::ranges::any_of(words, [&](std::string_view word) {
        for (std::size_t at = text.find(word); at != text.npos; at = text.find(word, at + 1)) {
            if ((at == 0 || !isLetter(at - 1)) && !isLetter(at + word.size())) return true;
        }
        return false;
    });
}

/// "genre" for "Genre(s)" and for "Genres".
std::string PlainLabel(std::string_view label) {
    std::string plain = ascii::Lowered(label);
    if (plain.ends_with("(s)")) plain.resize(plain.size() - 3);
    if (plain.ends_with('s') && !plain.ends_with(" as")) plain.pop_back();
    while (plain.ends_with(' ')) plain.pop_back();
    return plain;
}

class Labels {
  public:
    explicit Labels(const InformationBox& box) {
        for (const auto& row : box.rows) labels_.push_back(PlainLabel(row.label));
    }
    bool HasAny(std::initializer_list<std::string_view> wanted) const {
        return std::ranges::any_of(labels_, [&](const std::string& label) {
            return std::ranges::find(wanted, label) != wanted.end();
        });
    }

  private:
    std::vector<std::string> labels_;
};

bool IsEnglishMusicianCategory(std::string_view category) {
    std::string head = ascii::Lowered(category);
    if (IsOfTheWordItself(head, kEnglishProfessions) || IsOfTheWordItself(head, kEnglishGroups)) return false;
    for (const std::string_view word :
         {" from ", " of ", " by ", " in ", " with ", " who ", " about ", " for ", " at ", " established",
          " disestablished", " reestablished"}) {
        head.resize(std::min(head.find(word), head.size()));
    }
    if (head.starts_with("fictional") || head.starts_with("mythological") ||
        head.find("radio dj") != head.npos) {
        return false;
    }
    return EndsWithPluralOf(head, kEnglishProfessions) || EndsWithPluralOf(head, kEnglishGroups) ||
           head.ends_with("conductors (music)");
}

bool IsJapaneseMusicianCategory(std::string_view category) {
    if (category.starts_with("架空の") || IsOfTheWordItself(category, kJapaneseProfessions) ||
        IsOfTheWordItself(category, kJapaneseGroups)) {
        return false;
    }
    return EndsWith(category, kJapaneseProfessions) || EndsWith(category, kJapaneseGroups);
}

bool HasProfession(const InformationBox& box) {
    return std::ranges::any_of(box.rows, [](const InformationBox::Row& row) {
        const std::string label = PlainLabel(row.label);
        if (label != "occupation" && label != "職業") return false;
        const std::string value = ascii::Lowered(row.value);
        return HasWord(value, kEnglishProfessions) ||
               std::ranges::any_of(kJapaneseProfessions, [&](std::string_view word) {
                   return row.value.find(word) != std::string::npos;
               });
    });
}

}  // namespace

SubjectKind SubjectOf(const InformationBox& box) {
    const Labels labels(box);
    const bool hasGenre = labels.HasAny({"genre", "ジャンル"});
    if (box.isOfWork ||
        labels.HasAny({"released", "recorded", "length", "directed by", "starring", "stylistic origin",
                       "リリース", "録音", "発売日", "収録曲", "時間", "監督", "文化的起源", "様式的起源"})) {
        return SubjectKind::SomethingElse;
    }
    if (std::ranges::any_of(
            box.headings, [](const std::string& text) { return ascii::Lowered(text) == "musical career"; }) ||
        labels.HasAny({"instrument", "担当楽器"}) || HasProfession(box) ||
        (hasGenre && labels.HasAny({"label", "レーベル"}))) {
        return SubjectKind::Musician;
    }
    // A musician with a second career may have one of these too.
    if (labels.HasAny({"developer", "publisher", "medium", "channel", "date", "attendance"})) {
        return SubjectKind::SomethingElse;
    }
    if (hasGenre &&
        labels.HasAny({"member", "past member", "member of", "formerly of", "associated act", "spinoff",
                       "spinoff of", "origin", "出身地", "事務所", "メンバー", "旧メンバー", "共同作業者"})) {
        return SubjectKind::Musician;
    }
    return SubjectKind::Unknown;
}

bool IsMusicianCategory(std::string_view category, Edition edition) {
    return edition == Edition::Japanese ? IsJapaneseMusicianCategory(category)
                                        : IsEnglishMusicianCategory(category);
}

bool IsMusicianQualifier(std::string_view qualifier, Edition edition) {
    if (edition == Edition::Japanese)
        return EndsWith(qualifier, kJapaneseProfessions) || EndsWith(qualifier, kJapaneseGroups) ||
               qualifier.ends_with("グループ");
    // What follows a comma or "born" tells two of one kind apart: "singer, born 1990".
    std::string head = ascii::Lowered(qualifier.substr(0, qualifier.find(',')));
    head.resize(std::min({head.find(" born "), head.find(" from "), head.size()}));
    for (const std::string_view word : {"band", "group", "duo", "trio", "musical project"}) {
        if (head == word || head.ends_with(" " + std::string(word))) return true;
    }
    head += 's';
    return EndsWithPluralOf(head, kEnglishProfessions) || EndsWithPluralOf(head, kEnglishGroups);
}

bool IsPersonCategory(std::string_view category, Edition edition) {
    if (edition == Edition::Japanese) return category.ends_with("年生") || category == "存命人物";
    return category.ends_with(" births") || category == "Living people";
}

std::vector<std::string> OtherNames(const InformationBox& box) {
    static constexpr std::array kLabels{"also known as"sv,
                                        "other name"sv,
                                        "birth name"sv,
                                        "born"sv,
                                        "nickname"sv,
                                        "native name"sv,
                                        "stage name"sv,
                                        "kanji"sv,
                                        "japanese"sv,
                                        "japanese name"sv,
                                        "hangul"sv,
                                        "korean name"sv,
                                        "chinese"sv,
                                        "chinese name"sv,
                                        "simplified chinese"sv,
                                        "traditional chinese"sv,
                                        "別名"sv,
                                        "出生名"sv,
                                        "本名"sv,
                                        "原語名"sv,
                                        "英語名"sv};
    std::vector<std::string> names = box.names;
    for (const auto& row : box.rows) {
        if (std::ranges::find(kLabels, PlainLabel(row.label)) == kLabels.end()) continue;
        std::string_view rest = row.value;
        while (!rest.empty()) {
            const std::size_t end = std::min(rest.find_first_of("\n,"), rest.size());
            names.emplace_back(rest.substr(0, end));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }
    return names;
}

}  // namespace sorakaze::gateway
