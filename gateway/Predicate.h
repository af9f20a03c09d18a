// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Where an English sentence stops naming its subject and says something of it. Any bytes, any thread.
#pragma once

#include <cstddef>
#include <string_view>

namespace sorakaze::gateway {

/// Of a name that goes on, or of what else it is called: "Rogers Nelson, better known as Prince".
bool IsPartOfName(std::string_view words);

struct Predicate {
    /// Where the verb stands, or where the name ends that has none.
    std::size_t at;
    bool isKnown;
};

/// The verb of the first sentence, whose subject's name `text` follows: behind what is left of the name, or
/// behind a comma that follows it. What stands between may be any kind of phrase, and verbs within clauses
/// and of other subjects are none of the name's: if it isn't certain, there is none.
Predicate FindPredicate(std::string_view text, std::string_view title);

}  // namespace sorakaze::gateway
