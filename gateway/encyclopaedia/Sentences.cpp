// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/Sentences.h"

#include <cctype>
#include <cstddef>

#include "gateway/encyclopaedia/ParagraphText.h"

namespace sorakaze::gateway {
namespace {

/// True if the full stop at `at` ends an abbreviation or an initial.
bool IsAbbreviation(std::string_view text, std::size_t at) {
    const std::size_t blank = text.rfind(' ', at);
    const std::string_view word = text.substr(blank == text.npos ? 0 : blank + 1, at - (blank + 1));
    return word.size() <= 1 || word.find('.') != word.npos ||
           IsOneOf(word, {"Jr",  "Sr",  "Dr",   "Mr",  "Mrs",  "Ms",  "St",   "Ste",  "Prof",   "Lt", "Sgt",
                          "Col", "Gen", "Capt", "Rev", "Mt",   "Ft",  "vs",   "feat", "ft",     "No", "no",
                          "Nos", "Vol", "Op",   "Inc", "Ltd",  "Co",  "Corp", "Bros", "approx", "ca", "et",
                          "al",  "Jan", "Feb",  "Aug", "Sept", "Oct", "Nov",  "Dec"});
}

bool EndsEnglish(std::string_view text, std::size_t at) {
    if (std::string_view(".!?").find(text[at]) == std::string_view::npos) return false;
    if (at + 1 == text.size()) return true;
    if (text[at + 1] != ' ') return false;
    const std::size_t next = text.find_first_not_of(' ', at + 1);
    if (next == text.npos) return true;
    return !std::islower(static_cast<unsigned char>(text[next])) &&
           !(text[at] == '.' && IsAbbreviation(text, at));
}

}  // namespace

std::string_view Sentences::Next() {
    int quotes = 0;
    for (std::size_t at = 0; at < rest_.size();) {
        if (!name_.empty() && rest_.substr(at).starts_with(name_)) {
            at += name_.size();
            continue;
        }
        const std::string_view character = CharacterAt(rest_, at);
        at += character.size();
        if (IsOneOf(character, {"「", "『"})) ++quotes;
        if (IsOneOf(character, {"」", "』"})) --quotes;
        const bool ends =
            edition_ == Edition::Japanese ? character == "。" && quotes <= 0 : EndsEnglish(rest_, at - 1);
        if (!ends) continue;
        const std::string_view sentence = rest_.substr(0, at);
        rest_.remove_prefix(at);
        return sentence;
    }
    return {};
}

}  // namespace sorakaze::gateway
