// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The text value of the logic. A String is bytes that read as UTF-8; bytes that aren't UTF-8 never fail, each
// stray byte counts as one character. The empty and the unset string are one value.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sorakaze {

class String {
  public:
    String() = default;
    String(const char* text) : bytes_(text ? text : "") {}
    String(std::string bytes) : bytes_(std::move(bytes)) {}
    explicit String(std::string_view bytes) : bytes_(bytes) {}

    const std::string& Bytes() const { return bytes_; }
    bool IsEmpty() const { return bytes_.empty(); }

    String& operator+=(const String& other) {
        bytes_ += other.bytes_;
        return *this;
    }
    friend String operator+(String a, const String& b) { return a += b; }

  private:
    std::string bytes_;
};

/// Equality that ignores letter case, in all of Unicode, and nothing else.
bool operator==(const String& a, const String& b);
std::ostream& operator<<(std::ostream& out, const String& text);

// Positions and lengths count characters, from 1, but in LenB. All searches ignore letter case as `==` does.
// Every operation is linear in its input.

std::int32_t Len(const String& s);
std::int32_t LenB(const String& s);
/// The first n characters; empty for n <= 0.
String Left(const String& s, std::int32_t n);
/// The last n characters; empty for n <= 0.
String Right(const String& s, std::int32_t n);
/// From the 1-based `start` to the end, or `length` characters of that. A start below 1 counts as 1.
String Mid(const String& s, std::int32_t start);
String Mid(const String& s, std::int32_t start, std::int32_t length);
/// 1-based position of the first match at or after `start`, 0 if there is none. Nothing matches an empty
/// `find`.
std::int32_t InStr(const String& s, const String& find);
std::int32_t InStr(std::int32_t start, const String& s, const String& find);
/// The n-th piece (from 1) of `s` cut at `separator`; empty beyond the last one.
String NthField(const String& s, const String& separator, std::int32_t n);
/// All the pieces; none at all of an empty text.
std::vector<String> Split(const String& s, const String& separator);
String ReplaceAll(const String& s, const String& find, const String& with);
String Replace(const String& s, const String& find, const String& with);
/// White space (as Unicode has it) removed at both ends.
String Trim(const String& s);
/// The same at the start only.
String LTrim(const String& s);
String Lowercase(const String& s);
/// The one-character string of a code point; empty for what is no code point.
String Chr(std::int32_t code);
/// The code of the first character, of a stray byte its value; 0 for the empty text.
std::int32_t Asc(const String& s);
/// Upper-case hexadecimal digits without leading zeros; a negative number as its 32 bits.
String Hex(std::int32_t n);
/// The number, rounded to a whole one, in decimal: at least as many digits as `mask` has zeros, padded in
/// front with 0. A minus sign doesn't count as a digit.
String Format(double x, const String& mask);
String Str(std::int32_t n);
/// A whole number has no decimal point; others have the fewest digits that Val reads as the same number.
String Str(double x);
/// The decimal number at the start of `s` (white space before it is skipped), 0 if there is none.
double Val(const String& s);
/// A double as a 32-bit integer: the fraction is dropped, and what lies outside the range becomes its nearest
/// end.
std::int32_t ToInt32(double x);

/// A text encoding. There is one.
struct TextEncoding {
    String Chr(std::int32_t code) const { return sorakaze::Chr(code); }
};
struct Encodings {
    static constexpr TextEncoding UTF8{};
};
/// The text as UTF-8. Text that is UTF-8 is unchanged; other text is read as Windows-1252, byte by byte where
/// it isn't UTF-8.
String ConvertEncoding(const String& s, const TextEncoding& encoding);

}  // namespace sorakaze
