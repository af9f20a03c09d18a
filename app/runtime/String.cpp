// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/String.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <ostream>

#include "app/runtime/TextSearch.h"
#include "base/Utf8.h"
#include "base/unicode/Characters.h"

namespace sorakaze {
namespace {

std::size_t FromInt32(std::int32_t n) {
    return n > 0 ? static_cast<std::size_t>(n) : 0;
}

std::int32_t Count32(std::size_t count) {
    return static_cast<std::int32_t>(std::min<std::size_t>(count, std::numeric_limits<std::int32_t>::max()));
}

/// Calls take(piece) for every piece of `s` between separators, in order, until it gives false.
template <typename Take>
void ForEachPiece(std::string_view s, std::string_view separator, Take take) {
    const TextSearch search(s, separator);
    std::size_t begin = 0;
    while (const auto match = search.Next(begin)) {
        if (!take(s.substr(begin, match->begin - begin))) return;
        begin = match->end;
    }
    take(s.substr(begin));
}

String ReplaceMatches(const String& s, const String& find, const String& with, bool all) {
    const std::string_view text = s.Bytes();
    const TextSearch search(text, find.Bytes());
    auto match = search.Next(0);
    if (!match) return s;
    std::string result;
    result.reserve(text.size());
    std::size_t begin = 0;
    while (match) {
        result.append(text, begin, match->begin - begin);
        result += with.Bytes();
        begin = match->end;
        match = all ? search.Next(begin) : std::nullopt;
    }
    result.append(text, begin);
    return result;
}

}  // namespace

bool operator==(const String& a, const String& b) {
    const std::string_view x = a.Bytes();
    const std::string_view y = b.Bytes();
    if (x == y) return true;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < x.size() && j < y.size()) {
        const auto left = utf8::Read(x, i);
        const auto right = utf8::Read(y, j);
        if (left.code != right.code && unicode::Fold(left.code) != unicode::Fold(right.code)) return false;
        i += left.size;
        j += right.size;
    }
    return i == x.size() && j == y.size();
}

std::ostream& operator<<(std::ostream& out, const String& text) {
    return out << text.Bytes();
}

std::int32_t Len(const String& s) {
    return Count32(utf8::CountCharacters(s.Bytes()));
}

std::int32_t LenB(const String& s) {
    return Count32(s.Bytes().size());
}

String Left(const String& s, std::int32_t n) {
    return s.Bytes().substr(0, utf8::OffsetOf(s.Bytes(), FromInt32(n)));
}

String Right(const String& s, std::int32_t n) {
    const std::size_t count = utf8::CountCharacters(s.Bytes());
    const std::size_t skipped = count - std::min(count, FromInt32(n));
    return s.Bytes().substr(utf8::OffsetOf(s.Bytes(), skipped));
}

String Mid(const String& s, std::int32_t start) {
    return s.Bytes().substr(utf8::OffsetOf(s.Bytes(), FromInt32(start - (start > 0 ? 1 : 0))));
}

String Mid(const String& s, std::int32_t start, std::int32_t length) {
    const std::string_view text = s.Bytes();
    const auto rest = text.substr(utf8::OffsetOf(text, FromInt32(start - (start > 0 ? 1 : 0))));
    return String(rest.substr(0, utf8::OffsetOf(rest, FromInt32(length))));
}

std::int32_t InStr(const String& s, const String& find) {
    return InStr(0, s, find);
}

std::int32_t InStr(std::int32_t start, const String& s, const String& find) {
    const std::string_view text = s.Bytes();
    const std::size_t skipped = start > 0 ? FromInt32(start) - 1 : 0;
    const std::size_t from = utf8::OffsetOf(text, skipped);
    const auto match = TextSearch(text, find.Bytes()).Next(from);
    if (!match) return 0;
    return Count32(skipped + utf8::CountCharacters(text.substr(from, match->begin - from)) + 1);
}

String NthField(const String& s, const String& separator, std::int32_t n) {
    String field;
    if (n < 1) return field;
    ForEachPiece(s.Bytes(), separator.Bytes(), [&](std::string_view piece) {
        if (--n == 0) field = String(piece);
        return n > 0;
    });
    return field;
}

std::vector<String> Split(const String& s, const String& separator) {
    std::vector<String> pieces;
    if (s.IsEmpty()) return pieces;
    ForEachPiece(s.Bytes(), separator.Bytes(), [&](std::string_view piece) {
        pieces.emplace_back(piece);
        return true;
    });
    return pieces;
}

String ReplaceAll(const String& s, const String& find, const String& with) {
    return ReplaceMatches(s, find, with, true);
}

String Replace(const String& s, const String& find, const String& with) {
    return ReplaceMatches(s, find, with, false);
}

String Trim(const String& s) {
    return String(unicode::Trimmed(s.Bytes()));
}

String LTrim(const String& s) {
    return String(unicode::TrimmedAtStart(s.Bytes()));
}

String Lowercase(const String& s) {
    const std::string_view text = s.Bytes();
    std::string lower;
    lower.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const auto character = utf8::Read(text, at);
        if (character.code < 0x80) {
            lower += static_cast<char>(unicode::Lower(character.code));
        } else if (unicode::IsPlainlyCaseless(character.code)) {
            lower.append(text, at, character.size);
        } else {
            utf8::Append(lower, unicode::Lower(character.code));
        }
        at += character.size;
    }
    return lower;
}

String Chr(std::int32_t code) {
    std::string character;
    const bool surrogate = code >= 0xD800 && code < 0xE000;
    if (code >= 0 && code < 0x110000 && !surrogate) utf8::Append(character, static_cast<char32_t>(code));
    return character;
}

std::int32_t Asc(const String& s) {
    if (s.IsEmpty()) return 0;
    const char32_t code = utf8::Read(s.Bytes(), 0).code;
    return static_cast<std::int32_t>(code < utf8::kStray ? code : code - utf8::kStray);
}

String Hex(std::int32_t n) {
    char digits[8];
    const auto end = std::to_chars(digits, digits + sizeof digits, static_cast<std::uint32_t>(n), 16);
    for (char* digit = digits; digit != end.ptr; ++digit) {
        if (*digit >= 'a') *digit = static_cast<char>(*digit - 'a' + 'A');
    }
    return std::string(digits, end.ptr);
}

String Format(double x, const String& mask) {
    if (!std::isfinite(x)) return Str(x);
    const double whole = std::round(x);
    std::string digits = Str(std::abs(whole)).Bytes();
    const auto zeros = static_cast<std::size_t>(std::count(mask.Bytes().begin(), mask.Bytes().end(), '0'));
    if (digits.size() < zeros) digits.insert(0, zeros - digits.size(), '0');
    return (whole < 0 ? "-" : "") + digits;
}

String Str(std::int32_t n) {
    return std::to_string(n);
}

String Str(double x) {
    if (x == 0) return "0";
    char digits[400];
    const bool whole = std::isfinite(x) && std::floor(x) == x;
    const auto end = whole ? std::to_chars(digits, digits + sizeof digits, x, std::chars_format::fixed, 0)
                           : std::to_chars(digits, digits + sizeof digits, x);
    return std::string(digits, end.ptr);
}

double Val(const String& s) {
    const std::string_view text = unicode::TrimmedAtStart(s.Bytes());
    std::size_t at = 0;
    bool negative = false;
    if (at < text.size() && (text[at] == '+' || text[at] == '-')) negative = text[at++] == '-';
    const char* first = text.data() + at;
    const char* last = text.data() + text.size();
    // from_chars would take words such as "inf" for numbers as well.
    const char* lead = first != last && *first == '.' ? first + 1 : first;
    if (lead == last || *lead < '0' || *lead > '9') return 0;
    double value = 0;
    const auto read = std::from_chars(first, last, value);
    if (read.ec == std::errc::result_out_of_range) {
        // Too large or too small for a double: the exponent's sign tells which.
        const std::string_view number(first, static_cast<std::size_t>(read.ptr - first));
        const auto exponent = number.find_first_of("eE");
        const bool tiny = (exponent != std::string_view::npos && number[exponent + 1] == '-') || *lead == '0';
        value = tiny ? 0 : std::numeric_limits<double>::infinity();
    }
    return negative ? -value : value;
}

std::int32_t ToInt32(double x) {
    if (std::isnan(x)) return 0;
    if (x >= 2147483647.0) return std::numeric_limits<std::int32_t>::max();
    if (x <= -2147483648.0) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(x);
}

String ConvertEncoding(const String& s, const TextEncoding&) {
    if (utf8::IsWellFormed(s.Bytes())) return s;
    // The characters of Windows-1252 in 80 to 9F; 0 where it has none.
    static constexpr char32_t kUpper[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                            0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                            0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                            0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};
    std::string converted;
    for (std::size_t at = 0; at < s.Bytes().size();) {
        const auto character = utf8::Read(s.Bytes(), at);
        if (character.code < utf8::kStray) {
            converted.append(s.Bytes(), at, character.size);
        } else {
            const char32_t byte = character.code - utf8::kStray;
            const char32_t code = byte < 0xA0 ? kUpper[byte - 0x80] : byte;
            utf8::Append(converted, code ? code : 0xFFFD);
        }
        at += character.size;
    }
    return converted;
}

}  // namespace sorakaze
