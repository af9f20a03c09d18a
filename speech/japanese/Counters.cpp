// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/Counters.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "speech/japanese/Characters.h"
#include "speech/japanese/Numbers.h"

namespace sorakaze::japanese {
namespace {

using Pair = std::pair<std::u32string_view, std::u32string_view>;

constexpr Pair kReadings[] = {
    {U"月", U"がつ"},      {U"分", U"ふん"},     {U"日", U"にち"},     {U"人", U"にん"},
    {U"歳", U"さい"},      {U"才", U"さい"},     {U"本", U"ほん"},     {U"話", U"わ"},
    {U"代", U"だい"},      {U"位", U"い"},       {U"曲", U"きょく"},   {U"作", U"さく"},
    {U"週", U"しゅう"},    {U"度", U"ど"},       {U"杯", U"はい"},     {U"回", U"かい"},
    {U"か月", U"かげつ"},  {U"カ月", U"かげつ"}, {U"ヶ月", U"かげつ"}, {U"ヵ月", U"かげつ"},
    {U"ケ月", U"かげつ"},  {U"枚", U"まい"},     {U"名", U"めい"},     {U"丁目", U"ちょうめ"},
    {U"%", U"ぱーせんと"}, {U"個", U"こ"},       {U"匹", U"ひき"},     {U"章", U"しょう"},
    {U"里", U"り"}};

/// Counters with a native reading, which count 一 and 二 as ひと and ふた and change no sound.
constexpr Pair kNative[] = {{U"組", U"くみ"},     {U"口", U"くち"},   {U"晩", U"ばん"},   {U"筋", U"すじ"},
                            {U"粒", U"つぶ"},     {U"夏", U"なつ"},   {U"雫", U"しずく"}, {U"目", U"め"},
                            {U"欠片", U"かけら"}, {U"袋", U"ふくろ"}, {U"箱", U"はこ"},   {U"皿", U"さら"},
                            {U"束", U"たば"},     {U"株", U"かぶ"},   {U"房", U"ふさ"},   {U"言", U"こと"}};

/// Whole counts with a reading of their own.
constexpr Pair kWhole[] = {{U"七色", U"なないろ"}, {U"十色", U"といろ"}, {U"一片", U"ひとひら"}};

using Readings = std::array<std::u32string_view, 11>;
constexpr Readings kDays = {U"",       U"ついたち", U"ふつか", U"みっか",   U"よっか", U"いつか",
                            U"むいか", U"なのか",   U"ようか", U"ここのか", U"とおか"};
constexpr Readings kThings = {U"",       U"ひとつ", U"ふたつ", U"みっつ",   U"よっつ", U"いつつ",
                              U"むっつ", U"ななつ", U"やっつ", U"ここのつ", U"とお"};

/// Counters whose first sound is voiced after 三, 千, 万 and 何; after 三分 and the like は becomes ぱ.
constexpr std::u32string_view kVoiced = U" 階 軒 足 本 匹 杯 票 遍 片 ";
constexpr std::u32string_view kHalfVoiced = U" 歩 分 分間 泊 発 拍 ";

const Pair* FindPair(std::span<const Pair> pairs, std::u32string_view first) {
    const auto found =
        std::find_if(pairs.begin(), pairs.end(), [&](const Pair& pair) { return pair.first == first; });
    return found == pairs.end() ? nullptr : &*found;
}

bool IsListed(std::u32string_view list, std::u32string_view word) {
    return list.find(U' ' + std::u32string(word) + U' ') != std::u32string_view::npos;
}

std::optional<std::u32string> DayReading(std::uint64_t number, AfterMonth afterMonth) {
    if (number == 1 && afterMonth == AfterMonth::No) return U"いちにち";
    if (number >= 1 && number <= 10) return std::u32string(kDays[number]);
    if (number == 14) return U"じゅうよっか";
    if (number == 20) return U"はつか";
    if (number == 24) return U"にじゅうよっか";
    return {};
}

std::optional<std::u32string> IrregularReading(std::uint64_t number, std::u32string_view counter,
                                               AfterMonth afterMonth) {
    if (counter == U"日") return DayReading(number, afterMonth);
    if (counter == U"日間" && number > 1) {
        const auto days = DayReading(number, AfterMonth::No);
        return days ? std::optional(*days + U"かん") : std::nullopt;
    }
    if (counter == U"つ" && number >= 1 && number <= 10) return std::u32string(kThings[number]);
    if (counter == U"人" && number == 1) return U"ひとり";
    if (counter == U"人" && number == 2) return U"ふたり";
    if (counter == U"人" && number == 7) return U"しちにん";
    if ((counter == U"歳" || counter == U"才") && number == 20) return U"はたち";
    const Pair* native = FindPair(kNative, counter);
    if (native && number >= 1 && number <= 2)
        return (number == 1 ? U"ひと" : U"ふた") + std::u32string(native->second);
    return {};
}

/// Four, seven and nine have second names, which some counters want.
void ChooseDigitName(std::u32string& number, std::u32string_view counter) {
    const bool isMonth = counter == U"月", isHour = counter.starts_with(U'時');
    if (isHour || counter.starts_with(U'年') || counter.starts_with(U'人') || counter.starts_with(U'円'))
        ReplaceEnd(number, U"よん", U"よ");
    if (isMonth) ReplaceEnd(number, U"よん", U"し");
    if (isMonth || isHour) ReplaceEnd(number, U"なな", U"しち") || ReplaceEnd(number, U"きゅう", U"く");
}

/// Joins the two readings, whose sounds change where they meet.
std::u32string Joined(std::u32string number, std::u32string_view counter, std::u32string reading) {
    constexpr std::u32string_view kK = U"かきくけこ", kST = U"さしすせそたちつてと", kH = U"はひふへほ",
                                  kP = U"ぱぴぷぺぽ";
    const auto startsIn = [&](std::u32string_view row) { return row.find(reading.front()) != row.npos; };
    const bool beforeSix = startsIn(kK) || startsIn(kH);
    if (!beforeSix && !startsIn(kST) && !startsIn(kP)) return number + reading;
    const bool isChanged =
        ChangeBeforeHardSound(number) ||
        (beforeSix && (ReplaceEnd(number, U"ろく", U"ろっ") || ReplaceEnd(number, U"ひゃく", U"ひゃっ") ||
                       ReplaceEnd(number, U"びゃく", U"びゃっ") || ReplaceEnd(number, U"ぴゃく", U"ぴゃっ")));
    const bool voices = number.ends_with(U"さん") || number.ends_with(U"せん") || number.ends_with(U"ぜん") ||
                        number.ends_with(U"まん") || number.ends_with(U"なん");
    const bool minutes = counter.starts_with(U'分') && number.ends_with(U"よん");
    if (startsIn(kH) && (isChanged || minutes || (voices && IsListed(kHalfVoiced, counter)))) {
        reading.front() += U'ぱ' - U'は';
    } else if (!isChanged && voices && IsListed(kVoiced, counter)) {
        reading.front() += U'ば' - U'は';
    }
    return number + reading;
}

}  // namespace

std::u32string_view CounterReading(std::u32string_view counter) {
    const Pair* known = FindPair(kReadings, counter);
    return known ? known->second : std::u32string_view();
}

std::u32string ReadCounted(std::u32string_view number, std::u32string_view counter,
                           std::u32string_view reading, AfterMonth afterMonth) {
    if (const Pair* whole = FindPair(kWhole, std::u32string(number).append(counter)))
        return std::u32string(whole->second);
    if (const auto value = NumberValue(number)) {
        if (const auto irregular = IrregularReading(*value, counter, afterMonth)) return *irregular;
    }
    std::u32string text = ReadNumber(number);
    // 四日 is よっか in every month.
    if (counter == U"日" && number.ends_with(U'四') && ReplaceEnd(text, U"よん", U"よっか")) return text;
    ChooseDigitName(text, counter);
    if (const Pair* native = FindPair(kNative, counter)) return text.append(native->second);
    const std::u32string_view known = CounterReading(counter);
    if (text.empty() || (known.empty() && reading.empty())) return text.append(reading);
    return Joined(std::move(text), counter, std::u32string(known.empty() ? reading : known));
}

}  // namespace sorakaze::japanese
