// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/ForeignText.h"

#include <algorithm>
#include <cctype>

#include "base/Ascii.h"
#include "base/Utf8.h"
#include "base/unicode/Conversion.h"
#include "base/unicode/Normalization.h"
#include "player/TextEncoding.h"

namespace sorakaze::player {

namespace {

unsigned ByteAt(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

bool IsAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// True when `tail` is the beginning of a longer UTF-8 sequence and nothing more.
bool IsCutOffSequence(std::string_view tail) {
    if (tail.empty() || tail.size() > 3) return false;
    const unsigned lead = ByteAt(tail, 0);
    const std::size_t needed = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    return lead >= 0xC2 && lead <= 0xF4 && tail.size() < needed &&
           std::all_of(tail.begin() + 1, tail.end(), [](char c) { return (c & 0xC0) == 0x80; });
}

/// Signs of Japanese double-byte text. Kana are the surest: their lead bytes hardly occur in
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

}  // namespace

std::string DecodeUnlabelled(std::string_view bytes) {
    const std::size_t valid = utf8::WellFormedSize(bytes);
    if (valid == bytes.size()) return std::string(bytes);
    // Fixed-length tags cut names in the middle of a character.
    if (IsCutOffSequence(bytes.substr(valid)) && !IsAscii(bytes.substr(0, valid))) {
        return std::string(bytes.substr(0, valid));
    }
    const JapaneseSigns shiftJis = ShiftJisSigns(bytes);
    const JapaneseSigns eucJp = EucJpSigns(bytes);
    if (eucJp.valid && eucJp.kana >= 2) {
        return unicode::ToUtf8(bytes.substr(0, bytes.size() - eucJp.cutOffBytes), unicode::Encoding::EucJp);
    }
    const bool wholeWord = shiftJis.longestRun > 0 && !shiftJis.hasLatinLetters && shiftJis.cutOffBytes == 0;
    if (shiftJis.valid && (shiftJis.kana > 0 || shiftJis.longestRun >= 2 || wholeWord)) {
        return unicode::ToUtf8(bytes.substr(0, bytes.size() - shiftJis.cutOffBytes),
                               unicode::Encoding::ShiftJis);
    }
    const unicode::Encoding encoding = LikelyEncoding(bytes);
    std::string text = unicode::ToUtf8(bytes, encoding);
    // Half a character at the end.
    if (encoding != unicode::Encoding::Windows1252 && text.ends_with("\xEF\xBF\xBD"))
        text.resize(text.size() - 3);
    return text;
}

std::string CleanLine(std::string_view bytes) {
    std::string text = DecodeUnlabelled(bytes);
    if (!IsAscii(text)) text = unicode::Normalized(text, unicode::NormalForm::Nfc);
    std::string clean;
    clean.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const auto [character, size] = utf8::Read(text, at);
        if (utf8::IsControl(character)) {
            if (!clean.ends_with(' ')) clean += ' ';
        } else if (character != 0xFEFF) {
            clean.append(text, at, size);
        }
        at += size;
    }
    return std::string(ascii::Trimmed(clean, " "));
}

}  // namespace sorakaze::player
