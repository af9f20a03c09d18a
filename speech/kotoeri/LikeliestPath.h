// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <mecab.h>

#include <array>
#include <string_view>
#include <vector>

namespace sorakaze::kotoeri {

/// The fields of a dictionary line: kind and three below it, conjugation type and form, base form, reading.
/// Fields that say nothing are empty.
inline constexpr std::size_t kReading = 7;
using Feature = std::array<std::string_view, kReading + 1>;

Feature FeatureOf(const MeCab::Node& node);

/// The dictionary's costs come from newspapers. This is the cheapest way through a parsed sentence when what
/// is common there and odd in a title costs more: family names alone, given names behind nouns. The nodes are
/// the lattice's, without its two ends; their costs and links are made anew.
std::vector<const MeCab::Node*> LikeliestPath(const MeCab::Model& model, MeCab::Lattice& lattice);

}  // namespace sorakaze::kotoeri
