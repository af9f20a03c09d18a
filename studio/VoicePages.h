// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a browser would make of the two pages of a spoken line: the form that is sent, and the sound that the
// answer plays. Pure functions from bytes to values.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sorakaze::studio {

struct PageForm {
    std::string action;
    std::vector<std::pair<std::string, std::string>> fields;  ///< in the page's order, decoded
};

/// The first form of a page, where it is one that is posted and has an action.
std::optional<PageForm> FindForm(std::string_view html);

/// The body that posts the fields: application/x-www-form-urlencoded.
std::string EncodeForm(const PageForm& form);

/// The address of the first sound that a page plays, as it is written there; empty if there is none.
std::string FindSound(std::string_view html);

/// The address that `reference` means in a page at `base`, an address too; an empty `base` means a page
/// of a local file, which a reference must not be relative to. Empty for what isn't plain HTTP.
std::string Resolve(const std::string& base, const std::string& reference);

/// Whether an address is of this machine.
bool IsLoopback(const std::string& address);

}  // namespace sorakaze::studio
