// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/scripts/SpellingRules.h"

namespace sorakaze::scripts {
namespace {

constexpr const char* kRussian =
    "::Lower; ::Russian-Latin/BGN; ::Null; [ʹʺ’] > ; yyë > yo; yë > yo; h { ë > o; ë > yo; yye } $ > ye;"
    "iy } $ > y; yy } $ > y; ::Latin-ASCII;";
constexpr const char* kUkrainian =
    "::Lower; ::Ukrainian-Latin/BGN; ::Null; [ʹʺ’] > ; iy } $ > y; yy } $ > y; ::Latin-ASCII;";
constexpr const char* kBelarusian =
    "::Lower; ::Belarusian-Latin/BGN; ::Null; [ʹʺ’] > ; ŭ > w; ::Latin-ASCII;";
constexpr const char* kBulgarian = "::Lower; ::Bulgarian-Latin/BGN; ::Null; [ʹʺ’] > ; ŭ > a; ::Latin-ASCII;";
constexpr const char* kSerbian =
    "::Lower; ::Serbian-Latin/BGN; ::Macedonian-Latin/BGN; ::Null;"
    "dž > j; đ > dj; č > ch; ć > ch; š > sh; ž > zh; ǵ > gy; ḱ > ky; dz > dz; c > ts; j > y; ::Latin-ASCII;";
constexpr const char* kMongolian = "::Lower; ::Mongolian-Latin/BGN; ::Null; [ʹʺ’] > ; ::Latin-ASCII;";
constexpr const char* kKazakh = "::Lower; ::Kazakh-Latin/BGN; ::Null; [ʹʺ’] > ; ::Latin-ASCII;";

constexpr const char* kGreek =
    "::Lower; ::Greek-Latin/BGN; ::NFD; [:Mn:] > ; ::NFC; ::Null; dh > d; kh > h; ::Latin-ASCII;";
constexpr const char* kGeorgian = "::Lower; ::Georgian-Latin/BGN; ::Null; [’ʼ'] > ; q > k; ::Latin-ASCII;";
constexpr const char* kArmenian = "::Lower; ::Armenian-Latin/BGN; ::Null; [’ʼ'] > ; rr > r; ::Latin-ASCII;";

// Consonants of two letters are one sign until the vowels that aren't written have been guessed.
constexpr const char* kHebrew =
    "::NFD; $c = [bvgdhzxtklmnspfcršy];"
    "[\\u05B8\\u05B7\\u05B2] > a; \\u05B3 > o; [\\u05B6\\u05B5\\u05B1] > e; \\u05B4 > i; \\u05B9 > o;"
    "\\u05BB > u; [[:Mn:]\\u05F3\\u05F4] > ;"
    "^ { של } $ > šel; ^ { ירושלים } $ > yerušalayim; ^ { ארץ } $ > erec; ^ { חי } $ > hai;"
    "יה } $ > ya; אה } $ > a; הו } $ > hu; ה } $ > a; יו } $ > av; וו > v; יי > ai;"
    "^ { איי > ai; ^ { אי > i; ^ { או > o; ^ { א > a; ^ { עו > o; ^ { עי > i; ^ { ע > a; ^ { ו > v; ^ { י > "
    "y; ^ { ב > b; ^ { כ > k;"
    "^ { פ > p; ו > o; י > i; א > a; ע > a; ב > v; ג > g; ד > d; ה > h; ז > z; ח > h; ט > t; כ > x;"
    "ך > x; ל > l; מ > m; ם > m; נ > n; ן > n; ס > s; פ > f; ף > f; צ > c; ץ > c; ק > k; ר > r; ש > š; ת > t;"
    "::Null; ^ { ($c) } $c > $1 a; ($c) } $c $ > $1 a; aa+ > a; ii > i;"
    "::Null; x > kh; c > ts; š > sh; ::Latin-ASCII;";
constexpr const char* kArabic =
    "::NFC; $c = [bθjhxdðrzsšğfkqlmntpčžgwy];"
    "[\\u0640\\u0651\\u0652] > ; \\u064E > a; \\u064F > u; \\u0650 > i; [:Mn:] > ;"
    "^ { أم } $ > om; ^ { عبد } $ > ab\\u00B7d; ^ { محمد } $ > mohamed; ^ { أنت } $ > enta; ^ { خالد } $ > "
    "xalid;"
    "^ { من } $ > min; ^ { الله } $ > allah; لا > la; ^ { ال > 'al '; ^ { إ > i; [اأإآٱ] > a; ع } [او] > ; ع "
    "> a;"
    "a { و > w; و } ا > w; وو > w; ^ { و > w; ^ { [يی] > y; و > ou; ؤ > o; ئ > i; ة > a; ى > a; ء > ;"
    "[يی] } ا > iy; [يی] > i; ب > b; ت > t; ث > θ; ج > j; ح > h; خ > x; د > d; ذ > ð; ر > r; ز > z; س > s;"
    "ش > š; ص > s; ض > d; ط > t; ظ > z; غ > ğ; ف > f; ق > k; [كک] > k; ل > l; م > m; ن > n; [هھ] > h; پ > p;"
    "چ > č; ژ > ž; گ > g;"
    "::Null; ^ { ($c) } $c > $1 a; ' ' { ($c) } $c > $1 a; ($c) } $c $ > $1 a; aa+ > a; iyi > i; ii > i;"
    "::Null; θ > th; x > kh; ð > dh; š > sh; ğ > gh; č > ch; ž > zh; ::Latin-ASCII;";

// ICU writes a vowel that stands before its consonant between the consonants of a cluster, and no vowel that
// isn't written.
constexpr const char* kThai =
    "::Thai-Latin; ::NFD; ::Null; [\\u0300\\u0301\\u0302\\u0306\\u030C] > ; ::Null;"
    "$c = [bcdfghjklmnprstvwxy]; $l = [lrw]; $v = [aeiıouæ];"
    "$c \\u0312 > ; y \\u0323 } [^$v] > n;"
    "e i\\u0304 y > ia; e $l i\\u0304 y > lia; e u\\u0323\\u0304 x > uea; e a\\u0304 > ao;"
    "[kpth] { e l a\\u0304 > lao; [kpth] { e r a\\u0304 > rao; e x > oe; e l } [bkmnpty] > le;"
    "e r } [bkmnpty] > re; a\\u0323 w > ua; i\\u0323 y > ai; i\\u0323 > ai; ı > ai; æ > ae; a\\u0309 > am;"
    "u\\u0323 > ue; v > rue; ::Null; [:Mn:] > ; ʹ > ; ::Null;"
    "ch > ch; c > j; ph > p; th > t; kh > k; ^ { hy > y; ^ { hn > n; x } $v > ; x > o; ::Null;"
    "[^$c$v] { ([bdfhjlmnrswy]) } [bdfhjkmnpst] > $1 a; [^$c$v] { s } w > sa; ([$c]) } ng [^$v] > $1 o;"
    "$c { w } $c > ua; $v { [bp] } [^$v$c] > p; $v { [dsj] } [^$v] > t; ::Null;"
    "[^$v$c] { ($c) } $c [^$v$c] > $1 o; ::Latin-ASCII;";

// In these the vowel of a written consonant is often mute: "kamala" is said "kamal".
constexpr const char* kNorthIndian =
    "::Any-Latin; ::NFC; ::Null; $c = [bcdfghjklmnprstvyśṣṭḍṇṅñṁṃḷ\\u1e5bġqz]; $v = [aeiouāīūēōêô];"
    "nha } $ > ngh; $v $c { a } $ > ; $v $c h { a } $ > ; ::Null;"
    "$v $c { a } $c $v > ; $v $c h { a } $c $v > ; $v $c { a } $c h $v > ; ::Null;"
    "r̥ > ri; cch > cch; cc > cch; ch > ch; c > ch; jñ > gy; [śṣ] > sh; [ṅṇñ] > n; [ṁṃ] } [bp] > m; [ṁṃ] > n; "
    "m̐ > n; ġ > g; q > k;"
    "::NFD; [:Mn:] > ; ::NFC; ::Null; [^a-z] > ;";
constexpr const char* kSouthIndian =
    "::Any-Latin; ::NFC; ::Null; ḻ > zh; cc > cch; ch > ch; c > ch; [śṣ] > sh; ṟṟ > tr; [ṅṇñṉ] > n; [ṁṃ] > "
    "m; r̥ > ri;"
    "::NFD; [:Mn:] > ; ::NFC; ::Null; [^a-z] > ;";

constexpr const char* kKorean =
    "::Hangul-Latin; ::Null; '-' > ; ::Null; $v = [aeiou]; $e = [bcdghjkmnpt$];"
    "^ { l } [aeiouwy] > r; $v { l } [aeiouwy] > r; h } [aeo]? $ > h;"
    "$v { ss } $e > t; $v { g } $e > k; $v { d } $e > t; $v { b } $e > p; ::Latin-ASCII;";
constexpr const char* kOther =
    "::Any-Latin; ::NFD; [:Mn:] > ; ::NFC; ::Null; ǝ > e; ʿ > ; ʾ > ; ::Latin-ASCII;";

bool Has(std::u32string_view word, std::u32string_view any) {
    return word.find_first_of(any) != std::u32string_view::npos;
}

/// What language it is shows in letters that others don't have.
const char* CyrillicRules(std::u32string_view word) {
    if (Has(word, U"әғқңұһӘҒҚҢҰҺ")) return kKazakh;
    if (Has(word, U"іїєґІЇЄҐ")) return Has(word, U"ўЎыЫ") ? kBelarusian : kUkrainian;
    if (Has(word, U"ўЎ")) return kBelarusian;
    if (Has(word, U"ђјљњћџѓќѕЂЈЉЊЋЏЃЌЅ")) return kSerbian;
    if (Has(word, U"өүӨҮ")) return kMongolian;
    const auto hard = word.find_first_of(U"ъЪ");
    const bool isVowel =
        hard != word.npos && hard + 1 < word.size() && !Has(word.substr(hard + 1, 1), U"еёюяЕЁЮЯ");
    return isVowel && !Has(word, U"ыэёЫЭЁ") ? kBulgarian : kRussian;
}

constexpr struct {
    std::string_view script;
    const char* rules;
} kScripts[] = {
    {"Grek", kGreek},       {"Geor", kGeorgian},    {"Armn", kArmenian},    {"Hebr", kHebrew},
    {"Arab", kArabic},      {"Thai", kThai},        {"Deva", kNorthIndian}, {"Gujr", kNorthIndian},
    {"Guru", kNorthIndian}, {"Beng", kNorthIndian}, {"Orya", kNorthIndian}, {"Taml", kSouthIndian},
    {"Telu", kSouthIndian}, {"Knda", kSouthIndian}, {"Mlym", kSouthIndian}, {"Hang", kKorean},
    {"Ethi", kOther},       {"Mymr", kOther},       {"Syrc", kOther},       {"Thaa", kOther}};

}  // namespace

const char* const kChineseRules =
    "::Han-Latin; ::NFD; u\\u0308 > yu; [:Mn:] > ; ::NFC; ::Null; $b = [^a-z];"
    "$b { q > ch; $b { x > sh; zh > j; $b { c } [^h] > ts;";

const char* const kKatakanaRules =
    "::Lower; ::Latin-ASCII; sh } [^aeiouy] > shu; ch } [^aeiouy] > chi; tsi > tsui; ts } [^aeiou] > tsu; kh "
    "> h;"
    "zh > j; th > t; ph > f; bh > b; dh > d; gh > g; jh > j; ng } [^aeiouy] > n; si > shi; zi > ji; tu > tsu;"
    "t } [^aeiouyst] > to; d } [^aeiouyd] > do; ::Null; [aeioun] { h } [^aeiouy] > ;"
    "[^cs] { hu } [^aeiou] > fu; [^cs] { hu > f; ::Null; ::Latin-Katakana; ::Null;"
    "ヷ > ヴァ; ヸ > ヴィ; ヹ > ヴェ; ヺ > ヴォ; [a-z] > ;";

const char* SpellingRules(std::string_view script, std::u32string_view word) {
    if (script == "Cyrl") return CyrillicRules(word);
    for (const auto& known : kScripts)
        if (known.script == script) return known.rules;
    return nullptr;
}

}  // namespace sorakaze::scripts
