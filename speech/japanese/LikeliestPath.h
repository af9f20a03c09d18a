// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <mecab.h>

#include <array>
#include <string_view>
#include <vector>

namespace sorakaze::japanese {

/// The fields of a dictionary line: word class and its three divisions, conjugation type and form, base form,
/// reading, pronunciation. Fields without a value are empty.
inline constexpr std::size_t kReading = 7, kPronunciation = 8;
using Feature = std::array<std::string_view, 9>;

Feature FeatureOf(const MeCab::Node& node);

/// The dictionary's costs come from newspapers. This is the cheapest path through a parsed sentence if what
/// is common there and rare in a title costs more: family names alone, given names after nouns. The nodes are
/// the lattice's, without its two ends; their costs and links are overwritten.
std::vector<const MeCab::Node*> LikeliestPath(const MeCab::Model& model, MeCab::Lattice& lattice);

}  // namespace sorakaze::japanese
