// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/kotoeri/Lexicon.h"

#include <algorithm>
#include <array>

namespace sorakaze::kotoeri {
namespace {

constexpr auto kEntries = std::to_array<Entry>({
// clang-format off
#include "speech/kotoeri/Entries.inc"
    // clang-format on
});

constexpr bool Places::*kAnywhere = nullptr;

struct Preference {
    std::u32string_view surface;
    std::u32string_view reading;  ///< the dictionary's, katakana
    std::u32string_view better;   ///< hiragana
    bool Places::*place;          ///< where it is better
};

constexpr auto kPreferences = std::to_array<Preference>({
// clang-format off
#include "speech/kotoeri/Preferences.inc"
    // clang-format on
});

struct Kanji {
    std::u32string_view reading;
    std::u32string_view kanji;
};

constexpr auto kKanji = std::to_array<Kanji>({
// clang-format off
#include "speech/kotoeri/Kanji.inc"
    // clang-format on
});

constexpr bool BySurface(const Entry& a, const Entry& b) {
    return a.surface < b.surface;
}

/// Sorted while it is compiled: whoever adds an entry puts it where it is found best.
constexpr auto kSorted = [] {
    auto entries = kEntries;
    std::sort(entries.begin(), entries.end(), BySurface);
    return entries;
}();

static_assert(std::adjacent_find(kSorted.begin(), kSorted.end(), [](const Entry& a, const Entry& b) {
                  return a.surface == b.surface;
              }) == kSorted.end());

}  // namespace

std::span<const Entry> Entries() {
    return kSorted;
}

std::optional<Entry> EntryAtBeginning(std::u32string_view text,
                                      const std::function<bool(const Entry&)>& suits) {
    std::optional<Entry> longest;
    const auto* entry =
        std::lower_bound(kSorted.begin(), kSorted.end(), Entry{text.substr(0, 1), {}}, BySurface);
    for (; entry != kSorted.end() && entry->surface.front() == text.front(); ++entry) {
        const bool isLonger = !longest || entry->surface.size() > longest->surface.size();
        if (isLonger && text.starts_with(entry->surface) && suits(*entry)) longest = *entry;
    }
    return longest;
}

std::u32string_view BetterReading(std::u32string_view surface, std::u32string_view reading,
                                  const Places& places) {
    const auto* const found =
        std::find_if(kPreferences.begin(), kPreferences.end(), [&](const Preference& preference) {
            return preference.surface == surface && preference.reading == reading &&
                   (preference.place == kAnywhere || places.*preference.place);
        });
    return found == kPreferences.end() ? std::u32string_view() : found->better;
}

std::u32string_view KanjiReading(char32_t kanji) {
    const auto* const found = std::find_if(kKanji.begin(), kKanji.end(), [kanji](const Kanji& group) {
        return group.kanji.find(kanji) != std::u32string_view::npos;
    });
    return found == kKanji.end() ? std::u32string_view() : found->reading;
}

}  // namespace sorakaze::kotoeri
