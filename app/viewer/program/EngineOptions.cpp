// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/program/EngineOptions.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include "app/viewer/program/DropRoot.h"

namespace sorakaze::viewer {
namespace {

constexpr std::uint16_t kUsualSoundPort = 4713;

/// After the last colon of "http://host:port/path", "tcp:host" or "tcp:host:port"; 0 where there is none.
std::uint16_t PortOf(std::string_view address) {
    const auto scheme = address.find("://");
    if (scheme != std::string_view::npos) address.remove_prefix(scheme + 3);
    address = address.substr(0, address.find('/'));
    const auto colon = address.rfind(':');
    if (colon == std::string_view::npos) return 0;
    const unsigned long port = std::strtoul(std::string(address.substr(colon + 1)).c_str(), nullptr, 10);
    return port <= 0xffff ? static_cast<std::uint16_t>(port) : std::uint16_t{0};
}

}  // namespace

std::optional<std::vector<std::uint16_t>> PortsFor(const Service& service) {
    if (!service.own) return std::nullopt;
    std::vector<std::uint16_t> ports{PortOf(service.address)};
    const char* servers = std::getenv("PULSE_SERVER");
    std::istringstream list(servers ? servers : "");
    for (std::string server; list >> server;) {
        if (server.find("unix:") != std::string::npos || server.starts_with('/')) continue;
        const std::uint16_t port = PortOf(server);
        ports.push_back(port != 0 ? port : kUsualSoundPort);
    }
    return ports;
}

std::vector<std::string> EngineOptions(const Service& service) {
    std::vector<std::string> options{
        "sorakaze-viewer",
        "--webEngineArgs",
        // Errors about sound and missing buses are expected.
        "--log-level=3",
        // One process less to start before a page is heard.
        "--disable-features=AudioServiceOutOfProcess",
        // A name that resolves to this machine only after it was allowed is refused when connecting.
        "--enable-features=BlockInsecurePrivateNetworkRequests,"
        "BlockInsecurePrivateNetworkRequestsForNavigations",
        // These would make connections that no rule sees.
        "--disable-quic",
        "--force-webrtc-ip-handling-policy=disable_non_proxied_udp",
    };
    if (service.own) options.push_back("--host-resolver-rules=MAP * ~NOTFOUND , EXCLUDE 127.0.0.1");
    const bool root = ::geteuid() == 0;
    // Root's processes it refuses to start in its sandbox; the confinement of this process holds for them.
    if (root) options.emplace_back("--no-sandbox");
    if (root || !CanMakeUserNamespaces())
        std::fprintf(stderr, "%sthe web engine runs %s\n", kWarningPrefix,
                     root ? "as root, without its own sandbox" : "with its filter of system calls alone");
    return options;
}

}  // namespace sorakaze::viewer
