// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "gateway/Gateway.h"

namespace sorakaze::gateway {

/// What a host tells of a deployment.
struct Place {
    std::filesystem::path resources;        ///< of the application
    std::filesystem::path temporaryFolder;  ///< of the run
    /// The encyclopaedia's two sites, by name; an empty one is not asked.
    std::string encyclopaediaEnglish;
    std::string encyclopaediaJapanese;
};

/// Stands in for those of the two hosts that are empty: they become the host of the gateway that it gives
/// back, the search engine's only where there is a site to search. None where both are set. Where no port can
/// be bound they stay empty and `complaint` says why.
std::unique_ptr<Gateway> StandIn(const Place& place, std::string& searchHost, std::string& voiceHost,
                                 std::string& complaint);

}  // namespace sorakaze::gateway
