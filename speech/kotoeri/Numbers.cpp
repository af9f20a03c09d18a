// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/kotoeri/Numbers.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace sorakaze::kotoeri {
namespace {

using Pair = std::pair<std::u32string_view, std::u32string_view>;

constexpr std::u32string_view kUnits = U"十百千万億兆";
constexpr std::u32string_view kSigns = U"何〇零一二三四五六七八九十百千万億兆";
constexpr std::array<std::u32string_view, 18> kSignReadings = {
    U"なん", U"ぜろ", U"れい",   U"いち",   U"に",     U"さん", U"よん", U"ご",   U"ろく",
    U"なな", U"はち", U"きゅう", U"じゅう", U"ひゃく", U"せん", U"まん", U"おく", U"ちょう"};
static_assert(kSigns.size() == kSignReadings.size());

/// A digit and its unit that change each other.
constexpr std::array<Pair, 12> kUnitChanges = {{{U"何百", U"なんびゃく"},
                                                {U"何千", U"なんぜん"},
                                                {U"三百", U"さんびゃく"},
                                                {U"六百", U"ろっぴゃく"},
                                                {U"八百", U"はっぴゃく"},
                                                {U"一千", U"いっせん"},
                                                {U"三千", U"さんぜん"},
                                                {U"八千", U"はっせん"},
                                                {U"一兆", U"いっちょう"},
                                                {U"八兆", U"はっちょう"},
                                                {U"十兆", U"じゅっちょう"},
                                                {U"百兆", U"ひゃくちょう"}}};

/// Whole counts with a reading of their own.
constexpr Pair kWhole[] = {
    {U"一人", U"ひとり"},      {U"二人", U"ふたり"},     {U"七人", U"しちにん"}, {U"二日", U"ふつか"},
    {U"三日", U"みっか"},      {U"五日", U"いつか"},     {U"六日", U"むいか"},   {U"七日", U"なのか"},
    {U"八日", U"ようか"},      {U"九日", U"ここのか"},   {U"十日", U"とおか"},   {U"二十日", U"はつか"},
    {U"二十歳", U"はたち"},    {U"二十才", U"はたち"},   {U"七色", U"なないろ"}, {U"十色", U"といろ"},
    {U"一晩", U"ひとばん"},    {U"二晩", U"ふたばん"},   {U"一筋", U"ひとすじ"}, {U"一粒", U"ひとつぶ"},
    {U"一夏", U"ひとなつ"},    {U"一雫", U"ひとしずく"}, {U"一片", U"ひとひら"}, {U"一目", U"ひとめ"},
    {U"一欠片", U"ひとかけら"}};

/// The last sign and the counter, whatever stands before.
constexpr Pair kEndings[] = {{U"四人", U"よにん"}, {U"四年", U"よねん"},   {U"四時", U"よじ"},
                             {U"四月", U"しがつ"}, {U"四日", U"よっか"},   {U"四円", U"よえん"},
                             {U"七時", U"しちじ"}, {U"七月", U"しちがつ"}, {U"九時", U"くじ"},
                             {U"九月", U"くがつ"}};

/// How a counter and the sign before it change. The first sound is doubled behind some signs; behind 三, 千,
/// 万 and 何 it is voiced.
struct Counters {
    std::u32string_view counters;  ///< separated by blanks
    std::u32string_view doubling;  ///< the signs whose last sound becomes っ
    char32_t shiftDoubled;         ///< from the plain kana to the one behind っ: ほ to ぽ is two
    char32_t shiftVoiced;          ///< to the one behind 三, 千, 万 and 何
};
constexpr Counters kCounters[] = {
    {U"本 匹 杯 票 遍 片", U"一六八十百", 2, 1},
    {U"歩 分 分間 泊 発 拍", U"一六八十百", 2, 2},
    {U"階 軒", U"一六八十百", 0, 1},
    {U"回 個 箇 曲 巻 句 か月 カ月 ヵ月 ヶ月 ケ月 箇月 機 局 缶 課 感 角 か国 カ国 ヵ国 ヶ国 ケ国 回目 回転 "
     U"曲目",
     U"一六八十百", 0, 0},
    {U"歳 才 冊 章 週 周 周年 週間 世紀 節 線 首 隻 席 選 作 匙 点 通 頭 丁 丁目 着 体 等 滴 灯 隊",
     U"一八十", 0, 0}};

/// Each sign's reading, or each pair's.
std::vector<std::u32string> SignReadings(std::u32string_view number) {
    std::vector<std::u32string> readings;
    while (!number.empty()) {
        const auto* const change =
            std::find_if(kUnitChanges.begin(), kUnitChanges.end(),
                         [&](const Pair& pair) { return number.starts_with(pair.first); });
        if (change != kUnitChanges.end()) {
            readings.emplace_back(change->second);
            number.remove_prefix(2);
        } else {
            readings.emplace_back(kSignReadings[kSigns.find(number.front())]);
            number.remove_prefix(1);
        }
    }
    return readings;
}

const Counters* CountersWith(std::u32string_view counter) {
    for (const Counters& group : kCounters) {
        std::u32string_view rest = group.counters;
        while (!rest.empty()) {
            const std::size_t blank = std::min(rest.find(U' '), rest.size());
            if (rest.substr(0, blank) == counter) return &group;
            rest.remove_prefix(std::min(blank + 1, rest.size()));
        }
    }
    return nullptr;
}

/// Changes the end of `number`'s reading and the beginning of the counter's where they meet.
void Meet(std::u32string& number, char32_t lastSign, std::u32string& counter, const Counters& group) {
    constexpr std::u32string_view kVoiceless = U"かきくけこさしすせそたちつてとはひふへほ";
    if (kVoiceless.find(counter.front()) == std::u32string_view::npos) return;
    if (group.doubling.find(lastSign) != std::u32string_view::npos) {
        number.back() = U'っ';
        if (lastSign == U'十') number = number.substr(0, number.size() - 2) + U"ゅっ";
        counter.front() += group.shiftDoubled;
    } else if (std::u32string_view(U"三千万何").find(lastSign) != std::u32string_view::npos) {
        counter.front() += group.shiftVoiced;
    }
}

template <typename Pairs>
const Pair* FindPair(const Pairs& pairs, std::u32string_view text) {
    const auto* const found = std::find_if(std::begin(pairs), std::end(pairs),
                                           [&](const Pair& pair) { return pair.first == text; });
    return found == std::end(pairs) ? nullptr : found;
}

}  // namespace

bool IsNumber(std::u32string_view text) {
    return text.find_first_not_of(kSigns) == std::u32string_view::npos;
}

std::u32string ReadNumber(std::u32string_view number, std::u32string_view counter,
                          std::u32string_view counterReading) {
    const std::u32string whole = std::u32string(number) + std::u32string(counter);
    if (const Pair* known = FindPair(kWhole, whole)) return std::u32string(known->second);
    std::u32string ending;
    // Signs without a unit among them are spelt out: 一九八四.
    const bool hasUnits = number.find_first_of(kUnits) != std::u32string_view::npos;
    if (counter.size() == 1 && (hasUnits || number.size() == 1)) {
        if (const Pair* known = FindPair(kEndings, whole.substr(number.size() - 1))) {
            ending = known->second;
            number.remove_suffix(1);
        }
    }
    std::u32string reading;
    auto signs = SignReadings(number);
    std::u32string counted = ending.empty() ? std::u32string(counterReading) : ending;
    const Counters* group = CountersWith(counter);
    if (ending.empty() && group && !signs.empty() && !counted.empty())
        Meet(signs.back(), number.back(), counted, *group);
    for (const auto& sign : signs) reading += sign;
    return reading + counted;
}

}  // namespace sorakaze::kotoeri
