// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/Dictionary.h"

#include <bit>
#include <random>
#include <string>

#include "app/runtime/Exceptions.h"
#include "base/Utf8.h"
#include "base/unicode/Characters.h"

namespace sorakaze {
namespace {

constexpr std::size_t LowestBit(std::size_t n) {
    return n & (~n + 1);
}

std::uint64_t RandomOdd() {
    std::random_device device;
    return (std::uint64_t{device()} << 32 | device()) | 1;
}

}  // namespace

std::size_t Dictionary::Hash::operator()(const String& key) const {
    static const std::uint64_t factor = RandomOdd();
    const std::string_view text = key.Bytes();
    std::uint64_t hash = factor;
    for (std::size_t at = 0; at < text.size();) {
        const auto character = utf8::Read(text, at);
        hash = (hash ^ unicode::Fold(character.code)) * factor;
        hash ^= hash >> 32;
        at += character.size;
    }
    return hash;
}

bool Dictionary::HasKey(const String& key) const {
    return map_.contains(key);
}

Variant Dictionary::Lookup(const String& key, const Variant& fallback) const {
    const auto found = map_.find(key);
    return found == map_.end() ? fallback : found->second.value;
}

void Dictionary::SetValue(const String& key, const Variant& value) {
    const auto [place, isNew] = map_.try_emplace(key, Entry{value, slots_.size()});
    if (!isNew) {
        place->second.value = value;
        return;
    }
    slots_.push_back(&*place);
    if (tree_.empty()) return;
    const std::size_t n = slots_.size();
    std::size_t count = 1;
    for (std::size_t child = n - 1; child > n - LowestBit(n); child -= LowestBit(child))
        count += tree_[child];
    tree_.push_back(count);
}

void Dictionary::Remove(const String& key) {
    const auto found = map_.find(key);
    if (found == map_.end()) return;
    const std::size_t slot = found->second.slot;
    map_.erase(found);
    if (tree_.empty()) BeginGaps();
    slots_[slot] = nullptr;
    for (std::size_t n = slot + 1; n < tree_.size(); n += LowestBit(n)) --tree_[n];
    if (map_.size() <= slots_.size() / 2) CloseGaps();
}

void Dictionary::BeginGaps() {
    tree_.resize(slots_.size() + 1);
    for (std::size_t n = 1; n < tree_.size(); ++n) tree_[n] = LowestBit(n);
}

void Dictionary::CloseGaps() {
    tree_.clear();
    std::erase(slots_, nullptr);
    for (std::size_t slot = 0; slot < slots_.size(); ++slot) slots_[slot]->second.slot = slot;
}

void Dictionary::Clear() {
    map_.clear();
    slots_.clear();
    tree_.clear();
}

std::int32_t Dictionary::Count() const {
    return static_cast<std::int32_t>(map_.size());
}

String Dictionary::Key(std::int32_t index) const {
    if (index < 0 || index >= Count()) {
        throw OutOfBoundsException("There is not a key " + std::to_string(index) + ".");
    }
    return slots_[SlotOf(static_cast<std::size_t>(index))]->first;
}

/// The slot of the key that has `index` others before it.
std::size_t Dictionary::SlotOf(std::size_t index) const {
    if (tree_.empty()) return index;
    std::size_t slot = 0;
    for (std::size_t step = std::bit_floor(slots_.size()); step > 0; step /= 2) {
        if (slot + step < tree_.size() && tree_[slot + step] <= index) {
            slot += step;
            index -= tree_[slot];
        }
    }
    return slot;
}

}  // namespace sorakaze
