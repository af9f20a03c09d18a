// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/StandIn.h"

#include <system_error>

namespace sorakaze::gateway {
namespace {

std::string Site(const std::string& name) {
    return name.empty() ? "" : "https://" + name;
}

}  // namespace

std::unique_ptr<Gateway> StandIn(const Place& place, std::string& searchHost, std::string& voiceHost,
                                 std::string& complaint) {
    if (!searchHost.empty() && !voiceHost.empty()) return nullptr;
    Options options;
    options.resources = place.resources;
    options.temporaryFolder = [folder = place.temporaryFolder] { return folder; };
    options.englishSite = Site(place.encyclopaediaEnglish);
    options.japaneseSite = Site(place.encyclopaediaJapanese);
    try {
        const bool searches = !options.englishSite.empty() || !options.japaneseSite.empty();
        auto gateway = std::make_unique<Gateway>(std::move(options));
        if (searchHost.empty() && searches) searchHost = gateway->Host();
        if (voiceHost.empty()) voiceHost = gateway->Host();
        return gateway;
    } catch (const std::system_error& error) {
        complaint = std::string("no services on this machine: ") + error.what();
        return nullptr;
    }
}

}  // namespace sorakaze::gateway
