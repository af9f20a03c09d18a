// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/grammar/Patterns.h"

#include <span>
#include <string_view>

#include "program/check/Words.h"

namespace sorakaze::grammar {
namespace {

/// None of the words has a sign that an expression gives a meaning.
std::string AnyOf(std::span<const std::string_view> words) {
    std::string pattern = "(?:";
    for (const std::string_view word : words) pattern += (pattern.size() > 3 ? "|" : "") + std::string(word);
    return pattern + ")";
}

}  // namespace

std::string HeaderPattern() {
    return AnyOf(words::kHeaders);
}

std::string BlockPattern() {
    return AnyOf(words::kBlocks);
}

std::string ModePattern() {
    return AnyOf(words::kModes) + "(?=\\s|#|$)";
}

std::string PlaceholderPattern() {
    return "\\[\\[" + AnyOf(words::kPlaceholders) + "\\]\\]";
}

std::string TrackPattern() {
    return "\\[\\[" + std::string(words::kTrack) + "\\]\\]";
}

}  // namespace sorakaze::grammar
