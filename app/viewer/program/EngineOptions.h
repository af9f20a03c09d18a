// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/viewer/Page.h"

namespace sorakaze::viewer {

/// The web engine's command line for a page of this service. Called after Confine: what this process may
/// then do decides over the engine's own sandbox.
std::vector<std::string> EngineOptions(const Service& service);

/// The only TCP ports that are needed, or nothing where the service's answer names who knows what: the own
/// service's, and those of sound servers that are reached over the network.
std::optional<std::vector<std::uint16_t>> PortsFor(const Service& service);

}  // namespace sorakaze::viewer
