// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Finds where an English sentence stops naming its subject and says something about it. Any bytes; any
// thread.
#pragma once

#include <cstddef>
#include <string_view>

namespace sorakaze::gateway {

/// Whether the words continue a name or introduce another one: "Rogers Nelson, better known as Prince".
bool IsPartOfName(std::string_view words);

struct Predicate {
    /// Of the verb, or of the name's end if no verb was found.
    std::size_t at;
    bool isFound;
};

/// The verb of the first sentence; `text` is what follows the beginning of its subject's name. Phrases of any
/// kind may come between the name and the verb, and verbs of clauses and of other subjects must not be taken
/// for it. If it isn't certain, no verb is found.
Predicate FindPredicate(std::string_view text, std::string_view title);

}  // namespace sorakaze::gateway
