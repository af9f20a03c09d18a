// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/Namesakes.h"

#include <algorithm>

#include "base/Ascii.h"
#include "gateway/encyclopaedia/Names.h"
#include "gateway/encyclopaedia/ParagraphText.h"
#include "gateway/encyclopaedia/SubjectKind.h"

namespace sorakaze::gateway {
namespace {

constexpr std::size_t kMostTitles = 50;

/// What it was asked for by.
std::string_view AskedTitle(const Candidate& candidate) {
    return candidate.redirectedFrom.empty() ? candidate.title : candidate.redirectedFrom;
}

bool IsWorkQualifier(std::string_view qualifier) {
    static constexpr std::string_view kWorks[] = {
        "song",           "album",   "film",       "ep",           "novel",    "book",      "series",
        "magazine",       "play",    "soundtrack", "opera",        "game",     "episode",   "single",
        "disambiguation", "comics",  "musical",    "ballet",       "poem",     "character", "mixtape",
        "tour",           "surname", "given name", "曲",           "アルバム", "映画",      "シングル",
        "小説",           "漫画",    "曖昧さ回避", "テレビドラマ", "ゲーム",   "楽曲",      "雑誌"};
    const std::string lower = ascii::Lowered(qualifier);
    return std::ranges::any_of(kWorks, [&](std::string_view work) { return lower.ends_with(work); });
}

/// Whether the second says more than the first about the same kind: "British band" and "band".
bool Narrows(std::string_view plain, std::string_view narrower) {
    const std::string one = ascii::Lowered(plain), other = ascii::Lowered(narrower);
    if (other.size() <= one.size()) return false;
    if (static_cast<unsigned char>(one[0]) >= 0x80) return other.ends_with(one);
    return other.ends_with(" " + one) || other.starts_with(one + " ") || other.starts_with(one + ",");
}

/// A single bearer of the name of that kind doesn't need more words.
bool IsPlain(std::string_view qualifier) {
    return !qualifier.empty() && qualifier.find_first_of(" ,") == qualifier.npos &&
           qualifier.find("の") == qualifier.npos;
}

bool IsBand(std::string_view qualifier) {
    return IsOneOf(qualifier, {"band", "group", "バンド", "音楽グループ"});
}

/// Whether hardly anybody means the other one.
bool IsLessKnown(const Candidate& other, const Candidate& best) {
    constexpr std::size_t kTimesLonger = 4, kMuchLonger = 2;
    const std::string_view plain = QualifierOf(best.title);
    if (Narrows(plain, QualifierOf(AskedTitle(other)))) return other.length <= best.length * kMuchLonger;
    // "singer" without more may only be the one singer beside a band of the same name.
    return IsBand(plain) && best.length > 0 && other.length * kTimesLonger <= best.length;
}

}  // namespace

bool IsMusician(const Candidate& candidate, Edition edition) {
    if (candidate.categories.empty()) return IsMusicianQualifier(QualifierOf(candidate.title), edition);
    return std::ranges::any_of(candidate.categories, [&](const std::string& category) {
        return IsMusicianCategory(category, edition);
    });
}

std::vector<std::string> TitlesOfBearers(std::vector<std::string> titles, std::string_view name,
                                         Edition edition) {
    std::erase_if(titles, [&](const std::string& title) {
        return IsWorkQualifier(QualifierOf(title)) ||
               !(SameName(WithoutQualifier(title), name) || SameName(title, name));
    });
    std::stable_partition(titles.begin(), titles.end(), [&](const std::string& title) {
        return IsMusicianQualifier(QualifierOf(title), edition);
    });
    titles.resize(std::min(titles.size(), kMostTitles));
    return titles;
}

const Candidate* BestKnown(std::span<const Candidate> musicians) {
    if (musicians.size() == 1) return &musicians.front();
    for (const Candidate& best : musicians) {
        if (!IsPlain(QualifierOf(best.title))) continue;
        const bool isBest = std::ranges::all_of(
            musicians, [&](const Candidate& other) { return &other == &best || IsLessKnown(other, best); });
        if (isBest) return &best;
    }
    return nullptr;
}

}  // namespace sorakaze::gateway
