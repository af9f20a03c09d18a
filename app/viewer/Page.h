// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the application sends to the program sorakaze-viewer on its standard input.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace sorakaze::viewer {

/// What a page may do on the network: post its form to one address, and what the answer needs.
struct Service {
    std::string address;  ///< "http://HOST/PATH"; empty: nothing
    std::string script;   ///< the page's one event handler; no other script of the page runs
    /// The service is the application's own: its answers need nothing but what is beside the address.
    bool own = false;
};

struct Page {
    std::string html;  ///< UTF-8
    Service service;
};

/// How a line on the program's standard error begins that is shown to the user, once.
inline constexpr const char* kWarningPrefix = "sorakaze-viewer: ";

std::string Pack(const Page& page);
/// Empty for bytes that Pack didn't make.
std::optional<Page> Unpack(std::string_view bytes);

}  // namespace sorakaze::viewer
