// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A map from text to a value that keeps the order of insertion. Keys are the same whatever their letter case,
// as texts are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "app/runtime/Variant.h"

namespace sorakaze {

class Dictionary;
using DictionaryRef = std::shared_ptr<Dictionary>;

class Dictionary {
  public:
    Dictionary() = default;
    Dictionary(const Dictionary&) = delete;
    Dictionary& operator=(const Dictionary&) = delete;

    bool HasKey(const String& key) const;
    /// The value under the key; `fallback` where there is none.
    Variant Lookup(const String& key, const Variant& fallback = {}) const;
    /// A new key becomes the last one; an existing key keeps its position and its letter case.
    void SetValue(const String& key, const Variant& value);
    void Remove(const String& key);
    void Clear();
    std::int32_t Count() const;
    /// The key at the 0-based place. Raises OutOfBoundsException. Takes constant time, and logarithmic time
    /// after removals, so that loops over all keys which remove some of them cost little.
    String Key(std::int32_t index) const;

  private:
    /// Different in every process: a peer that chooses the keys can't choose what they collide with.
    struct Hash {
        std::size_t operator()(const String& key) const;
    };
    struct Entry {
        Variant value;
        std::size_t slot;
    };
    using Map = std::unordered_map<String, Entry, Hash>;

    std::size_t SlotOf(std::size_t index) const;
    void BeginGaps();
    void CloseGaps();

    Map map_;
    std::vector<Map::value_type*> slots_;  ///< in order of insertion; null where one was removed
    /// How many keys the slots (n - lowest bit of n, n] hold: a Fenwick tree over slots counted from 1.
    /// Empty while there is no gap.
    std::vector<std::size_t> tree_;
};

}  // namespace sorakaze
