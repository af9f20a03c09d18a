// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/Names.h"

#include "base/Utf8.h"
#include "base/unicode/Characters.h"
#include "base/unicode/Normalization.h"

namespace sorakaze::gateway {
namespace {

/// For letters that Unicode doesn't decompose into a plain one and an accent.
const char* PlainLetters(char32_t letter) {
    switch (letter) {
        case U'&':
        case U'+':
            return "and";
        case U'ø':
            return "o";
        case U'đ':
        case U'ð':
            return "d";
        case U'ł':
            return "l";
        case U'ı':
            return "i";
        case U'æ':
            return "ae";
        case U'œ':
            return "oe";
        case U'þ':
            return "th";
        default:
            return nullptr;
    }
}

}  // namespace

std::string_view WithoutQualifier(std::string_view title) {
    const std::size_t bracket = title.rfind(" (");
    if (!title.ends_with(')') || bracket == title.npos || bracket == 0) return title;
    return title.substr(0, bracket);
}

std::string NameKey(std::string_view name) {
    const std::string folded = unicode::FoldedCase(unicode::Normalized(name, unicode::NormalForm::Nfkd));
    std::string_view text = unicode::Trimmed(folded);
    if (text.starts_with("the ")) text.remove_prefix(4);
    if (text.ends_with(", the")) text.remove_suffix(5);
    std::string plain;
    for (std::size_t at = 0; at < text.size();) {
        const auto [code, size] = utf8::Read(text, at);
        at += size;
        if (const char* letters = PlainLetters(code)) {
            plain += letters;
        } else if (unicode::IsAlphanumeric(code) || unicode::IsKanaVoicingMark(code)) {
            utf8::Append(plain, code);
        }
    }
    // Some bands' names are nothing but marks.
    return plain.empty() ? std::string(text) : plain;
}

std::string_view QualifierOf(std::string_view title) {
    const std::size_t end = WithoutQualifier(title).size();
    return end == title.size() ? std::string_view() : title.substr(end + 2, title.size() - end - 3);
}

bool SameName(std::string_view one, std::string_view other) {
    return NameKey(one) == NameKey(other);
}

}  // namespace sorakaze::gateway
