// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/CleanText.h"

#include <algorithm>

#include "base/Utf8.h"
#include "base/unicode/Normalization.h"
#include "speech/japanese/Characters.h"

namespace sorakaze::japanese {
namespace {

constexpr char32_t kVoiced = 0x3099;
constexpr char32_t kHalfVoiced = 0x309A;

bool IsVariationSelector(char32_t code) {
    return (code >= 0xFE00 && code <= 0xFE0F) || (code >= 0xE0100 && code <= 0xE01EF);
}
/// Zero-width blank, word joiner, byte order mark.
bool HasNoWidth(char32_t code) {
    return code == 0x200B || code == 0x2060 || code == 0xFEFF;
}
/// Includes punctuation and half-width forms.
bool IsJapanese(char32_t code) {
    return IsKanji(code) || (code >= 0x3000 && code <= 0x30FF) || (code >= 0xFF00 && code <= 0xFFEF);
}

/// Removes invisible characters next to Japanese ones, where they would separate words. Emoji keep theirs.
std::u32string WithoutInvisible(std::u32string_view text) {
    std::u32string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char32_t before = result.empty() ? U'\0' : result.back();
        if (IsVariationSelector(text[at]) && (IsKanji(before) || IsKana(before))) continue;
        if (HasNoWidth(text[at])) {
            const auto end =
                std::find_if_not(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(), HasNoWidth);
            const bool isInvisible = IsJapanese(before) || (end != text.end() && IsJapanese(*end));
            const auto size = static_cast<std::size_t>(end - text.begin()) - at;
            if (!isInvisible) result += text.substr(at, size);
            at += size - 1;
            continue;
        }
        result += text[at];
    }
    return result;
}

/// Composes the text; stray bytes stay as they are.
std::u32string ComposedAround(std::u32string_view text) {
    std::u32string result;
    while (!text.empty()) {
        const auto isStray = [](char32_t code) { return code >= utf8::kStray; };
        const auto end = std::find_if(text.begin(), text.end(), isStray);
        const auto size = static_cast<std::size_t>(end - text.begin());
        // Canonical composition only: the K forms would turn ㈱ into a word in brackets and ① into a digit.
        result += unicode::Normalized(text.substr(0, size), unicode::NormalForm::Nfc);
        text.remove_prefix(size);
        for (; !text.empty() && isStray(text.front()); text.remove_prefix(1)) result += text.front();
    }
    return result;
}

/// U+FF61 to U+FF9F in full width.
constexpr std::u32string_view kFromHalfWidth =
    U"。「」、・ヲァィゥェォャュョッーアイウエオカキクケコサシスセソタチツテト"
    U"ナニヌネノハヒフヘホマミムメモヤユヨラリルレロワン\u3099\u309A";

char32_t FullWidth(char32_t code) {
    if (code >= 0xFF61 && code <= 0xFF9F) return kFromHalfWidth[code - 0xFF61];
    if (code == 0x309B) return kVoiced;
    if (code == 0x309C) return kHalfVoiced;
    // The small katakana that write northern languages.
    if (code >= 0x31F0 && code <= 0x31FF) return U"クシストヌハヒフヘホムラリルレロ"[code - 0x31F0];
    return code;
}

/// Old and new form, for kanji whose old form the dictionary has nowhere or almost nowhere.
constexpr std::u32string_view kOldForms =
    U"髙﨑德濵瀨黑淸靑戀戰聲舊變峽廳歸彥顏强臺灣續總惡淚戲觸𠮷桒栁緖薰步每緣靈凜堯驒鷗鷄"
    U"噓摑剝頰瘦繫蟬麵醬焰啞囊潑屢簞蠟氣會來亞樂寶驛團獨";
constexpr std::u32string_view kNewForms =
    U"高崎徳浜瀬黒清青恋戦声旧変峡庁帰彦顔強台湾続総悪涙戯触吉桑柳緒薫歩毎縁霊凛尭騨鴎鶏"
    U"嘘掴剥頬痩繋蝉麺醤焔唖嚢溌屡箪蝋気会来亜楽宝駅団独";
static_assert(kOldForms.size() == kNewForms.size());

char32_t NewForm(char32_t code) {
    const std::size_t at = IsKanji(code) ? kOldForms.find(code) : std::u32string_view::npos;
    return at == std::u32string_view::npos ? code : kNewForms[at];
}

/// ヷ to ヺ are no longer written.
void Append(std::u32string& result, char32_t code) {
    if (code >= U'ヷ' && code <= U'ヺ') {
        result += U'ヴ';
        result += U"ァィェォ"[code - U'ヷ'];
    } else {
        result += code;
    }
}

}  // namespace

std::u32string CleanText(std::u32string_view text) {
    std::u32string result;
    for (const char32_t original : ComposedAround(WithoutInvisible(text))) {
        const char32_t code = NewForm(FullWidth(original));
        const char32_t before = result.empty() ? U'\0' : result.back();
        if (code == kVoiced || code == kHalfVoiced) {
            const char32_t pair = unicode::ComposedPair(before, code);
            if (pair != 0) {
                result.pop_back();
                Append(result, pair);
            } else if (!IsKana(before)) {
                // A combining mark would be drawn on top of the character before it.
                const char32_t apart = code == kVoiced ? U'゛' : U'゜';
                result += original == code ? code : apart;
            }
        } else if ((code == U'ゝ' || code == U'ヽ') && IsKana(before)) {
            result += unicode::WithoutMark(before);
        } else if ((code == U'ゞ' || code == U'ヾ') && IsKana(before)) {
            const char32_t voiced = unicode::ComposedPair(unicode::WithoutMark(before), kVoiced);
            Append(result, voiced != 0 ? voiced : before);
        } else {
            Append(result, code);
        }
    }
    return result;
}

}  // namespace sorakaze::japanese
