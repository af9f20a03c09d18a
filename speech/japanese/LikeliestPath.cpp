// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/LikeliestPath.h"

#include <algorithm>

namespace sorakaze::japanese {
namespace {

/// One kanji, as far as nodes of kanji go.
bool IsOneKanji(const MeCab::Node& node) {
    return node.length == 3;
}

bool IsFamilyName(const Feature& feature) {
    return feature[2] == "人名" && feature[3] == "姓";
}
bool IsGivenName(const Feature& feature) {
    return feature[2] == "人名" && feature[3] == "名";
}

bool IsCommonNoun(const Feature& feature) {
    return feature[0] == "名詞" &&
           (feature[1] == "一般" || feature[1] == "サ変接続" || feature[1] == "形容動詞語幹");
}

bool StartsWithNumeral(const MeCab::Node& node) {
    constexpr std::string_view kNumerals = "一二三四五六七八九十百千万億";
    return node.length >= 3 && kNumerals.find(std::string_view(node.surface, 3)) != std::string_view::npos;
}

/// What two neighbours cost beyond the dictionary's costs, whose typical differences are some thousands.
long ExtraCost(const MeCab::Node& left, const MeCab::Node& right, const Feature& after) {
    const Feature before = FeatureOf(left);
    const bool atEnd = right.stat == MECAB_EOS_NODE;
    long cost = 0;
    if (left.stat == MECAB_BOS_NODE && after[0] == "助詞") cost += 3000;
    if (IsFamilyName(before)) {
        if (atEnd || after[0] == "助詞" || IsCommonNoun(after)) cost += 2500;
        if (IsGivenName(after) && IsOneKanji(left) && IsOneKanji(right)) cost += 3000;
    }
    if (IsGivenName(after) && IsCommonNoun(before)) cost += 3000;
    if (IsGivenName(after) && left.stat == MECAB_BOS_NODE) cost += 2000;
    if (IsGivenName(before) && IsCommonNoun(after)) cost += 1500;
    // A stem that waits for its た or て.
    if (before[kReading].ends_with("ッ") &&
        (atEnd || (after[0] != "助詞" && after[0] != "助動詞" && after[0] != "動詞")))
        cost += 5000;
    // 三 + 千里
    if (before[1] == "数" && after[1] != "数" && StartsWithNumeral(right)) cost += 2500;
    return cost;
}

}  // namespace

Feature FeatureOf(const MeCab::Node& node) {
    std::string_view line = node.feature;
    Feature feature;
    for (auto& field : feature) {
        const std::size_t comma = line.find(',');
        field = line.substr(0, comma);
        if (field == "*") field = {};
        if (comma == std::string_view::npos) break;
        line.remove_prefix(comma + 1);
    }
    return feature;
}

std::vector<const MeCab::Node*> LikeliestPath(const MeCab::Model& model, MeCab::Lattice& lattice) {
    const auto connect = [&](MeCab::Node& right, MeCab::Node* lefts) {
        right.prev = nullptr;
        const Feature feature = FeatureOf(right);
        for (MeCab::Node* left = lefts; left; left = left->enext) {
            if (left->stat != MECAB_BOS_NODE && !left->prev) continue;
            const long cost = left->cost + model.transition_cost(left->rcAttr, right.lcAttr) + right.wcost +
                              ExtraCost(*left, right, feature);
            if (!right.prev || cost < right.cost) {
                right.prev = left;
                right.cost = cost;
            }
        }
    };
    for (std::size_t at = 0; at < lattice.size(); ++at) {
        for (MeCab::Node* right = lattice.begin_nodes(at); right; right = right->bnext)
            connect(*right, lattice.end_nodes(at));
    }
    connect(*lattice.eos_node(), lattice.end_nodes(lattice.size()));

    std::vector<const MeCab::Node*> path;
    for (const MeCab::Node* node = lattice.eos_node()->prev; node && node->stat != MECAB_BOS_NODE;
         node = node->prev)
        path.push_back(node);
    std::reverse(path.begin(), path.end());
    return path;
}

}  // namespace sorakaze::japanese
