// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <iterator>
#include <utility>

#include "base/Utf8.h"
#include "speech/reading/Rules.h"

namespace sorakaze::reading {
namespace {

/// How often a letter is said in a row at most: "nooo".
constexpr int kMostRepeats = 3;

/// Emoji, their modifiers and joiners, dingbats, arrows and boxes.
bool HasNoSound(char32_t code) {
    if (code >= 0x1F000 && code <= 0x1FAFF) return true;
    if (code >= 0x2190 && code <= 0x2BFF) return code != U'♯' && code != U'♭' && code != U'♮';
    return code == 0x200B || code == 0x200C || code == 0x200D || (code >= 0xFE00 && code <= 0xFE0F) ||
           code == 0x20E3 || code == U'©' || code == U'®' || code == U'™' || code == U'℗' ||
           (code >= 0xFFF0 && code <= 0xFFFD) || code == 0x3030 || code == 0x303D;
}

/// Several characters that are one to the rules, and what they become. Letters keep their plain forms.
std::string_view PlainForm(char32_t code) {
    static constexpr std::pair<char32_t, std::string_view> kForms[] = {
        {U'‘', "'"},   {U'’', "'"},    {U'‛', "'"},   {U'´', "'"},  {U'`', "'"},  {U'“', "\""},
        {U'”', "\""},  {U'„', "\""},   {U'«', "\""},  {U'»', "\""}, {U'‐', "-"},  {U'‑', "-"},
        {U'…', "..."}, {U'№', "no. "}, {U'＆', "&"},  {U'＋', "+"}, {U'＃', "#"}, {U'♮', ""},
        {U'Ⅰ', "I"},   {U'Ⅱ', "II"},   {U'Ⅲ', "III"}, {U'Ⅳ', "IV"}, {U'Ⅴ', "V"},  {U'Ⅵ', "VI"},
        {U'Ⅶ', "VII"}, {U'Ⅷ', "VIII"}, {U'Ⅸ', "IX"},  {U'Ⅹ', "X"},  {U'Ⅺ', "XI"}, {U'Ⅻ', "XII"},
        {U'ⅰ', "i"},   {U'ⅱ', "ii"},   {U'ⅲ', "iii"}, {U'ⅳ', "iv"}, {U'ⅴ', "v"},  {U'ⅵ', "vi"},
        {U'ⅶ', "vii"}, {U'ⅷ', "viii"}, {U'ⅸ', "ix"},  {U'ⅹ', "x"},  {U'ⅺ', "xi"}, {U'ⅻ', "xii"},
        {U'＄', "$"},
    };
    const auto* found = std::find_if(std::begin(kForms), std::end(kForms),
                                     [code](const auto& form) { return form.first == code; });
    return found == std::end(kForms) ? std::string_view() : found->second;
}

/// Whether a mark is said or paused for once however often it is repeated.
bool IsSaidOnce(char32_t code) {
    return code < 0x80 ? code > 0x20 && !IsLetter(code) && (code < U'0' || code > U'9') && code != U'[' &&
                             code != U']'
                       : code == U'！' || code == U'？' || code == U'。' || code == U'、' || code == U'・' ||
                             code == U'～' || code == U'〜' || code == U'–' || code == U'—' || code == U'─';
}

}  // namespace

std::string CleanMarks(std::string_view text, Main voice) {
    std::string clean;
    clean.reserve(text.size());
    char32_t last = 0;
    int repeats = 0;
    const auto add = [&](char32_t code, std::string_view bytes) {
        repeats = code == last ? repeats + 1 : 1;
        last = code;
        // Three points are a pause and not an end.
        if (code == U'.' && repeats == 3) clean.back() = ',';
        const int most = IsSaidOnce(code)                                      ? 1
                         : code == U'ー' || IsLetter(code) || IsJapanese(code) ? kMostRepeats
                                                                               : 0;
        if (most == 0 || repeats <= most) clean += bytes;
    };
    for (std::size_t at = 0; at < text.size();) {
        const auto [code, size] = utf8::Read(text, at);
        // A Japanese voice pauses at a note.
        const bool isPause = voice == Main::Japanese && (code == U'♪' || code == U'♫');
        if (HasNoSound(code) && !isPause) {
            if (!clean.empty() && clean.back() != ' ') add(U' ', " ");
        } else if (const std::string_view plain = PlainForm(code); !plain.empty()) {
            for (std::size_t i = 0; i < plain.size();) {
                const auto [part, length] = utf8::Read(plain, i);
                add(part, plain.substr(i, length));
                i += length;
            }
        } else {
            add(code, text.substr(at, size));
        }
        at += size;
    }
    return clean;
}

}  // namespace sorakaze::reading
