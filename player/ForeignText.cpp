// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/ForeignText.h"

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cctype>
#include <cstdint>

namespace sorakaze::player {

namespace {

unsigned ByteAt(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

bool IsAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Where the first ill-formed UTF-8 sequence begins, or the size.
std::size_t ValidUtf8Length(std::string_view bytes) {
    const auto length = static_cast<std::int64_t>(bytes.size());
    std::int64_t index = 0;
    while (index < length) {
        const std::int64_t start = index;
        UChar32 character = 0;
        U8_NEXT(bytes.data(), index, length, character);
        if (character < 0) return static_cast<std::size_t>(start);
    }
    return bytes.size();
}

/// True when `tail` is the beginning of a longer UTF-8 sequence and nothing more.
bool IsCutOffSequence(std::string_view tail) {
    if (tail.empty() || tail.size() > 3) return false;
    const unsigned lead = ByteAt(tail, 0);
    const std::size_t needed = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    return lead >= 0xC2 && lead <= 0xF4 && tail.size() < needed &&
           std::all_of(tail.begin() + 1, tail.end(), [](char c) { return (c & 0xC0) == 0x80; });
}

/// How Japanese double-byte text shows itself. Kana are the surest sign: their lead bytes hardly occur in
/// western text.
struct JapaneseSigns {
    bool valid = true;
    int kana = 0;
    int longestRun = 0;  ///< of frequent double-byte characters in a row
    bool hasLatinLetters = false;
    std::size_t cutOffBytes = 0;  ///< half a character at the end
};

JapaneseSigns ShiftJisSigns(std::string_view bytes) {
    JapaneseSigns signs;
    int run = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const unsigned lead = ByteAt(bytes, i);
        if (lead < 0x80 || (lead >= 0xA1 && lead <= 0xDF)) {
            if (lead < 0x80 && std::isalpha(static_cast<int>(lead))) signs.hasLatinLetters = true;
            run = 0;
            continue;
        }
        const bool leads = (lead >= 0x81 && lead <= 0x9F) || (lead >= 0xE0 && lead <= 0xEF) || lead >= 0xFA;
        if (leads && i + 1 == bytes.size()) {
            signs.cutOffBytes = 1;
            break;
        }
        const unsigned trail = i + 1 < bytes.size() ? ByteAt(bytes, i + 1) : 0;
        if (!leads || lead > 0xFC || trail < 0x40 || trail == 0x7F || trail > 0xFC) {
            signs.valid = false;
            return signs;
        }
        const bool kana = (lead == 0x82 && trail >= 0x9F && trail <= 0xF1) || (lead == 0x83 && trail <= 0x96);
        const bool frequent = kana || (lead >= 0x81 && lead <= 0x97);
        signs.kana += kana ? 1 : 0;
        run = frequent ? run + 1 : 0;
        signs.longestRun = std::max(signs.longestRun, run);
        ++i;
    }
    return signs;
}

JapaneseSigns EucJpSigns(std::string_view bytes) {
    JapaneseSigns signs;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const unsigned lead = ByteAt(bytes, i);
        if (lead < 0x80) continue;
        if (i + 1 == bytes.size()) {
            signs.cutOffBytes = 1;
            break;
        }
        const unsigned trail = ByteAt(bytes, i + 1);
        if (!((lead >= 0xA1 && lead <= 0xFE && trail >= 0xA1 && trail <= 0xFE) ||
              (lead == 0x8E && trail >= 0xA1))) {
            signs.valid = false;
            return signs;
        }
        signs.kana += (lead == 0xA4 && trail <= 0xF3) || (lead == 0xA5 && trail <= 0xF6) ? 1 : 0;
        ++i;
    }
    return signs;
}

std::string Converted(std::string_view bytes, const char* encoding) {
    std::string utf8;
    icu::UnicodeString(bytes.data(), static_cast<std::int32_t>(bytes.size()), encoding).toUTF8String(utf8);
    return utf8;
}

icu::StringPiece Piece(std::string_view text) {
    return {text.data(), static_cast<std::int32_t>(text.size())};
}

bool IsControl(UChar32 character) {
    return character < 0x20 || (character >= 0x7F && character <= 0x9F) || character == 0x2028 ||
           character == 0x2029;
}

}  // namespace

bool IsUtf8(std::string_view bytes) {
    return ValidUtf8Length(bytes) == bytes.size();
}

std::string DecodeUnlabelled(std::string_view bytes) {
    const std::size_t valid = ValidUtf8Length(bytes);
    if (valid == bytes.size()) return std::string(bytes);
    // Fixed-length tags cut names in the middle of a character.
    if (IsCutOffSequence(bytes.substr(valid)) && !IsAscii(bytes.substr(0, valid))) {
        return std::string(bytes.substr(0, valid));
    }
    const JapaneseSigns shiftJis = ShiftJisSigns(bytes);
    const JapaneseSigns eucJp = EucJpSigns(bytes);
    if (eucJp.valid && eucJp.kana >= 2) {
        return Converted(bytes.substr(0, bytes.size() - eucJp.cutOffBytes), "EUC-JP");
    }
    const bool wholeWord = shiftJis.longestRun > 0 && !shiftJis.hasLatinLetters && shiftJis.cutOffBytes == 0;
    if (shiftJis.valid && (shiftJis.kana > 0 || shiftJis.longestRun >= 2 || wholeWord)) {
        return Converted(bytes.substr(0, bytes.size() - shiftJis.cutOffBytes), "windows-31j");
    }
    return Converted(bytes, "windows-1252");
}

std::string DecodeUtf16(std::string_view bytes, bool bigEndian) {
    return Converted(bytes, bigEndian ? "UTF-16BE" : "UTF-16LE");
}

std::string CleanLine(std::string_view bytes) {
    std::string text = DecodeUnlabelled(bytes);
    if (!IsAscii(text)) text = Normalized(text, Composition::Composed);
    std::string clean;
    clean.reserve(text.size());
    const auto length = static_cast<std::int64_t>(text.size());
    for (std::int64_t index = 0; index < length;) {
        const std::int64_t start = index;
        UChar32 character = 0;
        U8_NEXT_OR_FFFD(text.data(), index, length, character);
        if (IsControl(character)) {
            if (!clean.ends_with(' ')) clean += ' ';
        } else if (character != 0xFEFF) {
            clean.append(text, static_cast<std::size_t>(start), static_cast<std::size_t>(index - start));
        }
    }
    const auto first = clean.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return clean.substr(first, clean.find_last_not_of(' ') - first + 1);
}

std::string FoldCase(std::string_view utf8) {
    std::string folded;
    icu::UnicodeString::fromUTF8(Piece(utf8)).foldCase().toUTF8String(folded);
    return folded;
}

std::string Normalized(std::string_view utf8, Composition form) {
    UErrorCode error = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = form == Composition::Composed
                                             ? icu::Normalizer2::getNFCInstance(error)
                                             : icu::Normalizer2::getNFDInstance(error);
    const icu::UnicodeString text = icu::UnicodeString::fromUTF8(Piece(utf8));
    if (U_FAILURE(error)) return std::string(utf8);
    const icu::UnicodeString normalized = normalizer->normalize(text, error);
    std::string result;
    (U_SUCCESS(error) ? normalized : text).toUTF8String(result);
    return result;
}

}  // namespace sorakaze::player
