// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/unicode/Characters.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

#include <cstdint>

#include "base/Utf8.h"

namespace sorakaze::unicode {
namespace {

UChar32 Code(char32_t code) {
    return static_cast<UChar32>(code);
}

}  // namespace

char32_t FoldFromTables(char32_t code) {
    return code >= utf8::kStray ? code : static_cast<char32_t>(u_foldCase(Code(code), U_FOLD_CASE_DEFAULT));
}

char32_t Lower(char32_t code) {
    if (code < 0x80) return code - 'A' < 26u ? code + 32 : code;
    if (IsPlainlyCaseless(code) || code >= utf8::kStray) return code;
    return static_cast<char32_t>(u_tolower(Code(code)));
}

bool IsWhiteSpace(char32_t code) {
    if (code < 0x80) return code == ' ' || (code >= 9 && code <= 13);
    return code < utf8::kStray && u_isUWhiteSpace(Code(code));
}

bool IsAlphanumeric(char32_t code) {
    return code < utf8::kStray && u_isalnum(Code(code));
}

bool IsKanaVoicingMark(char32_t code) {
    return code < utf8::kStray && u_getCombiningClass(Code(code)) == 8;
}

std::string_view ScriptOf(char32_t code) {
    UErrorCode error = U_ZERO_ERROR;
    const UScriptCode script = code < utf8::kStray ? uscript_getScript(Code(code), &error) : USCRIPT_UNKNOWN;
    const char* const name = U_SUCCESS(error) ? uscript_getShortName(script) : nullptr;
    return name ? name : "Zzzz";
}

std::optional<int> DecimalDigit(char32_t code) {
    const int value = code < utf8::kStray ? u_charDigitValue(Code(code)) : -1;
    return value < 0 ? std::nullopt : std::optional(value);
}

int ColumnsOf(char32_t code) {
    if (code < 0x300 || code >= utf8::kStray) return 1;
    const auto type = u_charType(Code(code));
    if (type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK || type == U_FORMAT_CHAR) return 0;
    const int width = u_getIntPropertyValue(Code(code), UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

std::string_view TrimmedAtStart(std::string_view utf8) {
    std::size_t begin = 0;
    while (begin < utf8.size()) {
        const auto character = utf8::Read(utf8, begin);
        if (!IsWhiteSpace(character.code)) break;
        begin += character.size;
    }
    return utf8.substr(begin);
}

std::string_view Trimmed(std::string_view utf8) {
    const std::string_view text = TrimmedAtStart(utf8);
    std::size_t end = text.size();
    while (end > 0) {
        std::size_t last = end - 1;
        while (last > 0 && end - last < 4 && utf8::IsContinuation(static_cast<unsigned char>(text[last])))
            --last;
        const auto character = utf8::Read(text, last);
        if (last + character.size != end || !IsWhiteSpace(character.code)) break;
        end = last;
    }
    return text.substr(0, end);
}

std::string FoldedCase(std::string_view utf8) {
    std::string folded;
    icu::UnicodeString::fromUTF8({utf8.data(), static_cast<std::int32_t>(utf8.size())})
        .foldCase()
        .toUTF8String(folded);
    return folded;
}

}  // namespace sorakaze::unicode
