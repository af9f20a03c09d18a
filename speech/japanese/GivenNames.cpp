// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/GivenNames.h"

#include <algorithm>
#include <iterator>

namespace sorakaze::japanese {
namespace {

struct Part {
    std::u32string_view reading;
    std::u32string_view kanji;
};

/// First parts with the reading that they have before a last part of the list below.
constexpr Part kFirstParts[] = {{U"えい", U"英栄瑛永"},
                                {U"かん", U"寛貫幹"},
                                {U"きょう", U"恭京響"},
                                {U"けい", U"圭啓敬慶恵慧佳"},
                                {U"けん", U"健賢謙憲研拳"},
                                {U"げん", U"源元弦"},
                                {U"こう", U"康浩航幸孝耕光晃功公宏弘昂"},
                                {U"しゅう", U"修周秀柊"},
                                {U"しゅん", U"俊駿瞬春隼"},
                                {U"しょう", U"翔将昌正祥勝匠昇"},
                                {U"しん", U"慎真伸信進新晋"},
                                {U"じゅん", U"純淳潤順準"},
                                {U"じょう", U"丈譲"},
                                {U"せい", U"誠聖清征星晴"},
                                {U"そう", U"壮宗聡颯蒼奏創湊"},
                                {U"だい", U"大"},
                                {U"たく", U"拓卓琢"},
                                {U"てつ", U"哲徹鉄"},
                                {U"ゆう", U"悠優裕祐佑勇雄友侑結"},
                                {U"よう", U"陽洋庸瑶"},
                                {U"りゅう", U"龍竜隆琉"},
                                {U"りょう", U"涼亮凌諒遼良稜"},
                                {U"れん", U"蓮連廉"}};
constexpr Part kLastParts[] = {{U"た", U"太汰"},         {U"すけ", U"介輔助祐"}, {U"へい", U"平"},
                               {U"ご", U"吾悟"},         {U"じ", U"司二治次"},   {U"いち", U"一市"},
                               {U"き", U"樹輝貴希気紀"}, {U"ま", U"馬真磨"},     {U"と", U"人斗翔都"},
                               {U"や", U"也哉弥矢"}};

template <std::size_t size>
std::u32string_view ReadingIn(const Part (&parts)[size], char32_t kanji) {
    const auto* found = std::find_if(std::begin(parts), std::end(parts), [kanji](const Part& part) {
        return part.kanji.find(kanji) != std::u32string_view::npos;
    });
    return found == std::end(parts) ? std::u32string_view() : found->reading;
}

}  // namespace

std::u32string ComposedGivenName(std::u32string_view name) {
    if (name.size() != 2) return {};
    const auto first = ReadingIn(kFirstParts, name[0]), last = ReadingIn(kLastParts, name[1]);
    if (first.empty() || last.empty()) return {};
    const bool isHardened = last == U"へい" && first.ends_with(U'ん');
    return std::u32string(first) + std::u32string(isHardened ? U"ぺい" : last);
}

}  // namespace sorakaze::japanese
