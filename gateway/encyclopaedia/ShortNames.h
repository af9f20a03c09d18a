// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a listener's music calls an artist who has a longer name, and how else the name can be written. Pure
// functions; any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sorakaze::gateway {

enum class Bearer { Person, Group };

/// Whether people may call the bearer of `whole` by `part`: "beethoven" or "js bach" a person, "chili
/// peppers" or "サザン" a group. True for slips of the pen in long words too: "sergei rachmaninov". A
/// person's name isn't short for a band that holds it.
bool IsShortFor(std::string_view part, std::string_view whole, Bearer bearer);

/// The name and another way to write it, the likelier first: without the blank of a Japanese name, with or
/// without "The", and "First Last" for "Last, First".
std::vector<std::string> Spellings(std::string_view name);

}  // namespace sorakaze::gateway
