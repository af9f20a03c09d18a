// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/Lexicon.h"

#include <algorithm>
#include <array>

namespace sorakaze::japanese {
namespace {

constexpr auto kEntries = std::to_array<Entry>({
// clang-format off
#include "speech/japanese/LexiconEntries.inc"
    // clang-format on
});

constexpr auto kNames = std::to_array<Entry>({
// clang-format off
#include "speech/japanese/GivenNameEntries.inc"
    // clang-format on
});

constexpr bool Context::*kAnywhere = nullptr;

struct Preference {
    std::u32string_view surface;
    std::u32string_view reading;    ///< the dictionary's, katakana
    std::u32string_view preferred;  ///< hiragana
    bool Context::*where;
};

constexpr auto kPreferences = std::to_array<Preference>({
// clang-format off
#include "speech/japanese/PreferredReadings.inc"
    // clang-format on
});

struct Kanji {
    std::u32string_view reading;
    std::u32string_view kanji;
};

constexpr auto kKanjiReadings = std::to_array<Kanji>({
// clang-format off
#include "speech/japanese/KanjiReadings.inc"
    // clang-format on
});

constexpr bool BySurface(const Entry& a, const Entry& b) {
    return a.surface < b.surface;
}

/// At compile time, so that the lists can be ordered by subject.
constexpr auto Sorted(auto entries) {
    std::sort(entries.begin(), entries.end(), BySurface);
    return entries;
}
constexpr auto kSortedEntries = Sorted(kEntries);
constexpr auto kSortedNames = Sorted(kNames);

constexpr bool HasDoubles(std::span<const Entry> sorted) {
    return std::adjacent_find(sorted.begin(), sorted.end(), [](const Entry& a, const Entry& b) {
               return a.surface == b.surface;
           }) != sorted.end();
}
static_assert(!HasDoubles(kSortedEntries) && !HasDoubles(kSortedNames));

}  // namespace

std::span<const Entry> LexiconEntries() {
    return kSortedEntries;
}

std::span<const Entry> GivenNames() {
    return kSortedNames;
}

std::optional<Entry> LongestEntry(std::span<const Entry> entries, std::u32string_view text,
                                  const std::function<bool(const Entry&)>& suits) {
    std::optional<Entry> longest;
    auto entry = std::lower_bound(entries.begin(), entries.end(), Entry{text.substr(0, 1), {}}, BySurface);
    for (; entry != entries.end() && entry->surface.front() == text.front(); ++entry) {
        const bool isLonger = !longest || entry->surface.size() > longest->surface.size();
        if (isLonger && text.starts_with(entry->surface) && suits(*entry)) longest = *entry;
    }
    return longest;
}

std::u32string_view PreferredReading(std::u32string_view surface, std::u32string_view reading,
                                     const Context& context) {
    const auto* const found =
        std::find_if(kPreferences.begin(), kPreferences.end(), [&](const Preference& preference) {
            return preference.surface == surface && preference.reading == reading &&
                   (preference.where == kAnywhere || context.*preference.where);
        });
    return found == kPreferences.end() ? std::u32string_view() : found->preferred;
}

std::u32string_view KanjiReading(char32_t kanji) {
    const auto* const found = std::find_if(
        kKanjiReadings.begin(), kKanjiReadings.end(),
        [kanji](const Kanji& group) { return group.kanji.find(kanji) != std::u32string_view::npos; });
    return found == kKanjiReadings.end() ? std::u32string_view() : found->reading;
}

}  // namespace sorakaze::japanese
