// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/PlaylistNames.h"

#include <unordered_map>
#include <unordered_set>

#include "base/unicode/Characters.h"
#include "player/ForeignText.h"

namespace sorakaze::player {

std::string JoinableName(std::string_view name) {
    std::string fit = CleanLine(name);
    for (auto comma = fit.find(", "); comma != std::string::npos; comma = fit.find(", ", comma)) {
        fit.erase(comma + 1, 1);
    }
    return fit;
}

void MakeDistinct(std::vector<std::string>& names) {
    // The names that exist come first, so that a number never takes another playlist's own name away.
    std::unordered_set<std::string> taken;
    std::vector<std::string*> doubles;
    for (std::string& name : names) {
        if (!taken.insert(unicode::FoldedCase(name)).second) doubles.push_back(&name);
    }
    // Where a number was free, the ones before it aren't: thousands of equal names cost no more than others.
    std::unordered_map<std::string, int> next;
    for (std::string* name : doubles) {
        int& number = next.try_emplace(unicode::FoldedCase(*name), 2).first->second;
        while (!taken.insert(unicode::FoldedCase(*name + ' ' + std::to_string(number))).second) ++number;
        *name += ' ' + std::to_string(number);
    }
}

}  // namespace sorakaze::player
