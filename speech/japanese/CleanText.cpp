// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/CleanText.h"

#include <algorithm>

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

/// Old and new form of kanji whose old form the dictionary hardly has, and of compatibility characters.
constexpr std::u32string_view kOldForms =
    U"髙﨑德濵瀨黑淸靑戀戰聲舊變峽廳歸彥顏强臺灣續總惡淚戲觸𠮷桒栁緖薰步每緣靈凜堯驒鷗鷄"
    U"噓摑剝頰瘦繫蟬麵醬焰啞囊潑屢簞蠟氣會來亞樂寶驛團獨"
    U"\uFA10\uFA12\uFA15\uFA16\uFA17\uFA18\uFA19\uFA1A\uFA1B\uFA1C\uFA1D\uFA1E\uFA20\uFA22\uFA25\uFA26"
    U"\uFA2A\uFA2B\uFA2C\uFA2D\uFA2E\uFA2F\uFA30\uFA31\uFA32\uFA33\uFA34\uFA35\uFA36\uFA37\uFA38\uFA39"
    U"\uFA3A\uFA3B\uFA3C\uFA3D\uFA3E\uFA3F\uFA40\uFA41\uFA42\uFA43\uFA44\uFA45\uFA46\uFA47\uFA48\uFA49"
    U"\uFA4A\uFA4B\uFA4C\uFA4D\uFA4E\uFA4F\uFA50\uFA51\uFA52\uFA53\uFA54\uFA55\uFA56\uFA57\uFA58\uFA59"
    U"\uFA5A\uFA5B\uFA5C\uFA5D\uFA5E\uFA5F\uFA60\uFA61\uFA62\uFA63\uFA64\uFA65\uFA66\uFA67\uFA68\uFA69"
    U"\uFA6A\uFA6B\uFA6C\uFA6D";
constexpr std::u32string_view kNewForms =
    U"高崎徳浜瀬黒清青恋戦声旧変峡庁帰彦顔強台湾続総悪涙戯触吉桑柳緒薫歩毎縁霊凛尭騨鴎鶏"
    U"嘘掴剥頬痩繋蝉麺醤焔唖嚢溌屡箪蝋気会来亜楽宝駅団独"
    U"塚晴凞猪益礼神祥福靖精羽蘒諸逸都飯飼館鶴郞隷侮僧免勉勤卑喝嘆器塀"
    U"墨層屮悔慨憎懲敏既暑梅海渚漢煮爫琢碑社祉祈祐祖祝禍禎穀突節練縉繁"
    U"署者臭艹艹著褐視謁謹賓贈辶逸難響頻恵𤋮舘";
static_assert(kOldForms.size() == kNewForms.size());

char32_t NewForm(char32_t code) {
    const std::size_t at = IsKanji(code) ? kOldForms.find(code) : std::u32string_view::npos;
    return at == std::u32string_view::npos ? code : kNewForms[at];
}

constexpr std::u32string_view kPlainKana = U"うかきくけこさしすせそたちつてとはひふへほ";
constexpr std::u32string_view kVoicedKana = U"ゔがぎぐげござじずぜぞだぢづでどばびぶべぼ";
constexpr std::u32string_view kHalfVoicedKana = U"ぱぴぷぺぽ";
constexpr char32_t kToKatakana = U'ア' - U'あ';

/// The kana with a voicing mark; 0 if there is none.
char32_t WithMark(char32_t kana, char32_t mark) {
    if (mark == kVoiced && kana >= U'ワ' && kana <= U'ヲ') return kana - U'ワ' + U'ヷ';
    const char32_t shift = IsKatakana(kana) ? kToKatakana : 0;
    const std::size_t at = kPlainKana.find(kana - shift);
    if (at == std::u32string_view::npos) return 0;
    if (mark == kVoiced) return kVoicedKana[at] + shift;
    const std::size_t firstOfH = kPlainKana.size() - kHalfVoicedKana.size();
    return at < firstOfH ? 0 : kHalfVoicedKana[at - firstOfH] + shift;
}

char32_t WithoutMark(char32_t kana) {
    const char32_t shift = IsKatakana(kana) ? kToKatakana : 0;
    if (const auto at = kVoicedKana.find(kana - shift); at != std::u32string_view::npos)
        return kPlainKana[at] + shift;
    if (const auto at = kHalfVoicedKana.find(kana - shift); at != std::u32string_view::npos)
        return kPlainKana[kPlainKana.size() - kHalfVoicedKana.size() + at] + shift;
    return kana;
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
    for (const char32_t original : WithoutInvisible(text)) {
        const char32_t code = NewForm(FullWidth(original));
        const char32_t before = result.empty() ? U'\0' : result.back();
        if (code == kVoiced || code == kHalfVoiced) {
            const char32_t pair = WithMark(before, code);
            if (pair != 0) {
                result.pop_back();
                Append(result, pair);
            } else if (!IsKana(before)) {
                // A combining mark would be drawn on top of the character before it.
                const char32_t apart = code == kVoiced ? U'゛' : U'゜';
                result += original == code ? code : apart;
            }
        } else if ((code == U'ゝ' || code == U'ヽ') && IsKana(before)) {
            result += WithoutMark(before);
        } else if ((code == U'ゞ' || code == U'ヾ') && IsKana(before)) {
            const char32_t voiced = WithMark(WithoutMark(before), kVoiced);
            Append(result, voiced != 0 ? voiced : before);
        } else {
            Append(result, code);
        }
    }
    return result;
}

}  // namespace sorakaze::japanese
