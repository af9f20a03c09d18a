// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/viewer/Page.h"

namespace sorakaze::viewer {

/// The web engine's command line for a page of this service. Called after Confine: whether the engine's own
/// sandbox works depends on what this process may still do.
std::vector<std::string> EngineOptions(const Service& service);

/// The only TCP ports that are needed: the own service's, and those of sound servers on the network. Empty
/// where the service's answer may name any server.
std::optional<std::vector<std::uint16_t>> PortsFor(const Service& service);

}  // namespace sorakaze::viewer
