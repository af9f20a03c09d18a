// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/PlaylistNames.h"

#include <unordered_set>

#include "player/ForeignText.h"

namespace sorakaze::player {

std::string FitName(std::string_view name) {
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
        if (!taken.insert(FoldCase(name)).second) doubles.push_back(&name);
    }
    for (std::string* name : doubles) {
        int number = 2;
        while (!taken.insert(FoldCase(*name + ' ' + std::to_string(number))).second) ++number;
        *name += ' ' + std::to_string(number);
    }
}

}  // namespace sorakaze::player
