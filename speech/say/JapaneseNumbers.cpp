// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/JapaneseNumbers.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <optional>
#include <utility>

namespace sorakaze::speech {
namespace {

using Pair = std::pair<std::string_view, std::string_view>;

constexpr std::array<std::string_view, 10> kDigits = {"ゼロ", "イチ", "ニ",   "サン", "ヨン",
                                                      "ゴ",   "ロク", "ナナ", "ハチ", "キュー"};
constexpr std::array<std::string_view, 10> kHundreds = {
    "",         "ヒャク",     "ニヒャク",   "サンビャク", "ヨンヒャク",
    "ゴヒャク", "ロッピャク", "ナナヒャク", "ハッピャク", "キューヒャク"};
constexpr std::array<std::string_view, 10> kThousands = {
    "", "セン", "ニセン", "サンゼン", "ヨンセン", "ゴセン", "ロクセン", "ナナセン", "ハッセン", "キューセン"};
constexpr std::array<std::string_view, 4> kMyriads = {"", "マン", "オク", "チョー"};

constexpr std::uint64_t kMost = 9999'9999'9999'9999;

constexpr std::pair<std::string_view, int> kKanjiDigits[] = {{"〇", 0}, {"零", 0}, {"一", 1}, {"二", 2},
                                                             {"三", 3}, {"四", 4}, {"五", 5}, {"六", 6},
                                                             {"七", 7}, {"八", 8}, {"九", 9}};
constexpr std::pair<std::string_view, std::uint64_t> kKanjiUnits[] = {
    {"十", 10}, {"百", 100}, {"千", 1000}, {"万", 10'000}, {"億", 100'000'000}, {"兆", 1'000'000'000'000}};

/// The sum that a number's signs make, and how it was written.
struct Parsed {
    std::uint64_t value = 0;
    std::string digits;    ///< where it is digits only, without units
    std::string decimals;  ///< behind the point
    bool tooLarge = false;
};

template <typename Table>
auto TakeFrom(const Table& table, std::string_view& text)
    -> std::optional<decltype(std::begin(table)->second)> {
    const auto* found = std::find_if(std::begin(table), std::end(table),
                                     [&](const auto& row) { return text.starts_with(row.first); });
    if (found == std::end(table)) return {};
    text.remove_prefix(found->first.size());
    return found->second;
}

std::optional<int> TakeDigit(std::string_view& text) {
    if (text.front() >= '0' && text.front() <= '9') {
        const int digit = text.front() - '0';
        text.remove_prefix(1);
        return digit;
    }
    return TakeFrom(kKanjiDigits, text);
}

class Reader {
  public:
    std::optional<Parsed> Read(std::string_view text) {
        while (!text.empty()) {
            if (text.front() == ',') {
                text.remove_prefix(1);
            } else if (text.front() == '.') {
                return Decimals(text.substr(1)) ? std::optional(Finish()) : std::nullopt;
            } else if (const auto digit = TakeDigit(text)) {
                TakeDigitIn(*digit);
            } else if (const auto unit = TakeFrom(kKanjiUnits, text)) {
                TakeUnit(*unit);
            } else {
                return {};
            }
        }
        return empty_ ? std::nullopt : std::optional(Finish());
    }

  private:
    void TakeDigitIn(int digit) {
        empty_ = false;
        hasCurrent_ = true;
        parsed_.digits += static_cast<char>('0' + digit);
        if (current_ <= kMost) current_ = current_ * 10 + static_cast<std::uint64_t>(digit);
    }

    void TakeUnit(std::uint64_t unit) {
        empty_ = false;
        units_ = true;
        const std::uint64_t times = hasCurrent_ ? std::min(current_, kMost) : 1;
        if (unit < 10'000) {
            below_ += times * unit;
        } else {
            const std::uint64_t all = below_ + (hasCurrent_ ? times : below_ == 0 ? 1 : 0);
            if (all > kMost / unit)
                parsed_.tooLarge = true;
            else
                above_ += all * unit;
            below_ = 0;
        }
        if (below_ > kMost || above_ > kMost) {
            parsed_.tooLarge = true;
            above_ = below_ = 0;
        }
        current_ = 0;
        hasCurrent_ = false;
    }

    bool Decimals(std::string_view text) {
        if (empty_ || text.empty()) return false;
        while (!text.empty()) {
            const auto digit = TakeDigit(text);
            if (!digit) return false;
            parsed_.decimals += static_cast<char>('0' + *digit);
        }
        return true;
    }

    Parsed Finish() {
        parsed_.value = above_ + below_ + current_;
        if (current_ > kMost || parsed_.value > kMost) parsed_.tooLarge = true;
        if (units_) parsed_.digits.clear();
        return parsed_;
    }

    Parsed parsed_;
    std::uint64_t above_ = 0, below_ = 0, current_ = 0;
    bool hasCurrent_ = false;
    bool units_ = false;
    bool empty_ = true;
};

std::string ReadFour(std::uint64_t number, bool aloneBelowMyriad) {
    std::string text;
    const std::uint64_t thousands = number / 1000;
    text += thousands == 1 && !aloneBelowMyriad ? std::string_view("イッセン") : kThousands[thousands];
    text += kHundreds[number / 100 % 10];
    const std::uint64_t tens = number / 10 % 10;
    if (tens > 1) text += kDigits[tens];
    if (tens > 0) text += "ジュー";
    if (number % 10 > 0) text += kDigits[number % 10];
    return text;
}

std::string ReadWhole(std::uint64_t number) {
    if (number == 0) return std::string(kDigits[0]);
    std::string text;
    std::uint64_t power = 1'0000'0000'0000;
    for (std::size_t group = kMyriads.size(); group-- > 0; power /= 10'000) {
        const std::uint64_t part = number / power % 10'000;
        if (part == 0) continue;
        std::string four = ReadFour(part, group == 0);
        if (group == 3 && part % 10 == 1) four.replace(four.size() - 3, 3, "ッ");
        text += four;
        text += kMyriads[group];
    }
    return text;
}

std::string ReadDigits(std::string_view digits) {
    std::string text;
    for (const char digit : digits) text += kDigits[static_cast<std::size_t>(digit - '0')];
    return text;
}

std::string Read(const Parsed& number) {
    // A telephone's number, an agent's.
    const bool digitByDigit = !number.digits.empty() &&
                              (number.tooLarge || (number.digits.size() > 1 && number.digits.front() == '0'));
    if (number.tooLarge && !digitByDigit) return {};
    std::string text = digitByDigit ? ReadDigits(number.digits) : ReadWhole(number.value);
    if (!number.decimals.empty()) text += "テン" + ReadDigits(number.decimals);
    return text;
}

/// Replaces the end of `text`; false where it ends otherwise.
bool ReplaceEnd(std::string& text, std::string_view end, std::string_view by) {
    if (!text.ends_with(end)) return false;
    text.replace(text.size() - end.size(), end.size(), by);
    return true;
}

enum class Onset { Other, K, S, H, P };

Onset OnsetOf(std::string_view kana) {
    constexpr std::pair<Onset, std::string_view> kRows[] = {{Onset::K, "カキクケコ"},
                                                            {Onset::S, "サシスセソタチツテト"},
                                                            {Onset::H, "ハヒフヘホ"},
                                                            {Onset::P, "パピプペポ"}};
    const auto first = kana.substr(0, 3);
    for (const auto& [onset, row] : kRows) {
        if (first.size() == 3 && row.find(first) != std::string_view::npos) return onset;
    }
    return Onset::Other;
}

/// "ホン" becomes "ポン" or "ボン": the row's sounds stand in the same order.
std::string Voiced(std::string_view kana, std::string_view row) {
    const auto place = std::string_view("ハヒフヘホ").find(kana.substr(0, 3));
    return std::string(row.substr(place, 3)) + std::string(kana.substr(3));
}

/// One, six, eight, ten and hundred close before a hard sound, each before its own kinds.
std::string Joined(std::string text, std::string counter) {
    const Onset onset = OnsetOf(counter);
    if (onset == Onset::Other) return text + counter;
    const bool beforeSix = onset == Onset::K || onset == Onset::H;
    const bool closes = ReplaceEnd(text, "イチ", "イッ") || ReplaceEnd(text, "ハチ", "ハッ") ||
                        ReplaceEnd(text, "ジュー", "ジュッ") ||
                        (beforeSix && (ReplaceEnd(text, "ロク", "ロッ") || ReplaceEnd(text, "ャク", "ャッ")));
    if (onset == Onset::H) {
        const bool minutes = counter == "フン" && text.ends_with("ヨン");
        if (closes || minutes || (counter == "フン" && text.ends_with("サン"))) {
            counter = Voiced(counter, "パピプペポ");
        } else if (text.ends_with("サン") || text.ends_with("セン") || text.ends_with("マン")) {
            counter = Voiced(counter, "バビブベボ");
        }
    }
    return text + counter;
}

/// What the dictionary, which doesn't see the number, has otherwise or not at all.
constexpr Pair kCounters[] = {{"月", "ガツ"},     {"分", "フン"},      {"日", "ニチ"},     {"人", "ニン"},
                              {"歳", "サイ"},     {"才", "サイ"},      {"本", "ホン"},     {"話", "ワ"},
                              {"代", "ダイ"},     {"位", "イ"},        {"曲", "キョク"},   {"作", "サク"},
                              {"週", "シュー"},   {"度", "ド"},        {"杯", "ハイ"},     {"回", "カイ"},
                              {"か月", "カゲツ"}, {"カ月", "カゲツ"},  {"ヶ月", "カゲツ"}, {"ヵ月", "カゲツ"},
                              {"ケ月", "カゲツ"}, {"%", "パーセント"}, {"枚", "マイ"},     {"名", "メー"}};

constexpr std::array<std::string_view, 11> kDays = {"",       "ツイタチ", "フツカ", "ミッカ",
                                                    "ヨッカ", "イツカ",   "ムイカ", "ナノカ",
                                                    "ヨーカ", "ココノカ", "トーカ"};
constexpr std::array<std::string_view, 11> kThings = {
    "", "ヒトツ", "フタツ", "ミッツ", "ヨッツ", "イツツ", "ムッツ", "ナナツ", "ヤッツ", "ココノツ", "トー"};

std::optional<std::string> Irregular(std::uint64_t number, std::string_view counter, bool behindMonth) {
    if (counter == "日") {
        if (number == 1 && !behindMonth) return "イチニチ";
        if (number >= 1 && number <= 10) return std::string(kDays[number]);
        if (number == 14) return "ジューヨッカ";
        if (number == 20) return "ハツカ";
        if (number == 24) return "ニジューヨッカ";
    }
    if (counter == "日間") {
        const auto days = Irregular(number, "日", false);
        return days ? std::optional(*days + "カン") : std::nullopt;
    }
    if (counter == "つ" && number >= 1 && number <= 10) return std::string(kThings[number]);
    if (counter == "人" && number == 1) return "ヒトリ";
    if (counter == "人" && number == 2) return "フタリ";
    if ((counter == "歳" || counter == "才") && number == 20) return "ハタチ";
    if (counter == "階" && number % 10 == 3) return ReadWhole(number) + "ガイ";
    return {};
}

/// Four, seven and nine have second names, which some counters want.
void ChooseName(std::string& text, std::string_view counter) {
    const auto isOneOf = [&](std::initializer_list<std::string_view> names) {
        return std::any_of(names.begin(), names.end(),
                           [&](std::string_view name) { return counter.starts_with(name); });
    };
    if (isOneOf({"年", "時", "人", "円"})) ReplaceEnd(text, "ヨン", "ヨ");
    if (counter == "月") ReplaceEnd(text, "ヨン", "シ");
    if (isOneOf({"時"}) || counter == "月") {
        ReplaceEnd(text, "ナナ", "シチ") || ReplaceEnd(text, "キュー", "ク");
    }
}

}  // namespace

std::string ReadNumber(std::string_view number) {
    const auto parsed = Reader().Read(number);
    return parsed ? Read(*parsed) : std::string();
}

std::string ReadCounted(std::string_view number, std::string_view counter, std::string_view counterKana,
                        bool behindMonth) {
    const auto parsed = Reader().Read(number);
    if (!parsed) return std::string(counterKana);
    if (parsed->decimals.empty()) {
        if (auto irregular = Irregular(parsed->value, counter, behindMonth)) return *irregular;
    }
    std::string text = Read(*parsed);
    ChooseName(text, counter);
    const auto* known = std::find_if(std::begin(kCounters), std::end(kCounters),
                                     [&](const Pair& row) { return row.first == counter; });
    return Joined(std::move(text), std::string(known != std::end(kCounters) ? known->second : counterKana));
}

}  // namespace sorakaze::speech
