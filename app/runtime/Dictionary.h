// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A map from text to a value that keeps the order of insertion. Keys are the same whatever their letter case,
// as texts are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <unordered_map>
#include <vector>

#include "app/runtime/Variant.h"

namespace sorakaze {

class Dictionary;
using DictionaryRef = std::shared_ptr<Dictionary>;

class Dictionary {
  public:
    bool HasKey(const String& key) const;
    /// The value under the key; `fallback` where there is none.
    Variant Lookup(const String& key, const Variant& fallback = {}) const;
    /// A new key goes behind all others; one that is there keeps its place and its letter case.
    void SetValue(const String& key, const Variant& value);
    void Remove(const String& key);
    void Clear();
    std::int32_t Count() const;
    /// The key at the 0-based place. Raises OutOfBoundsException.
    String Key(std::int32_t index) const;
};

}  // namespace sorakaze
