// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Starts the gateway for the services that a deployment doesn't name. Both hosts call it at their start.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "gateway/Gateway.h"

namespace sorakaze::gateway {

/// What a host knows of its station.
struct ServiceSettings {
    std::filesystem::path resources;        ///< of the application
    std::filesystem::path temporaryFolder;  ///< of the run
    /// Host names of the encyclopaedia's two sites. An empty one is not asked.
    std::string encyclopaediaEnglish;
    std::string encyclopaediaJapanese;
    std::string contact;  ///< for the sites' operators; may be empty
};

/// Sets those of the two hosts that are empty to that of a new gateway; `searchHost` only if there is a site
/// to search. Returns the gateway. Returns nullptr if both hosts are set, or if no port could be bound: then
/// the hosts stay empty, and `complaint` says why.
std::unique_ptr<Gateway> StartMissingServices(const ServiceSettings& settings, std::string& searchHost,
                                              std::string& voiceHost, std::string& complaint);

}  // namespace sorakaze::gateway
