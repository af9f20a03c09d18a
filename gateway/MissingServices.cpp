// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/MissingServices.h"

#include <system_error>

namespace sorakaze::gateway {
namespace {

std::string SiteAddress(const std::string& host) {
    return host.empty() ? "" : "https://" + host;
}

}  // namespace

std::unique_ptr<Gateway> StartMissingServices(const ServiceSettings& settings, std::string& searchHost,
                                              std::string& voiceHost, std::string& complaint) {
    if (!searchHost.empty() && !voiceHost.empty()) return nullptr;
    Options options;
    options.resources = settings.resources;
    options.temporaryFolder = [folder = settings.temporaryFolder] { return folder; };
    options.englishSite = SiteAddress(settings.encyclopaediaEnglish);
    options.japaneseSite = SiteAddress(settings.encyclopaediaJapanese);
    options.contact = settings.contact;
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
