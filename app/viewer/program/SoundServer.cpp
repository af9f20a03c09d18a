// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/program/SoundServer.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>

namespace sorakaze::viewer {
namespace {

constexpr std::string_view kLocal = "unix:";

std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string PathOf(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

/// Stays open: the path leads to the socket itself, past all folders. Empty where there is no socket.
std::string OpenSocket(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_PATH);
    struct stat status {};
    if (descriptor < 0) return {};
    if (::fstat(descriptor, &status) == 0 && S_ISSOCK(status.st_mode)) return PathOf(descriptor);
    ::close(descriptor);
    return {};
}

/// A copy in memory, which the next user may open. `path` itself where there is nothing to copy.
std::string Copy(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return path;
    std::ifstream file(path, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    const int copy = ::memfd_create("settings", 0);
    if (copy < 0) return path;
    const bool complete = ::write(copy, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    return complete && ::fchmod(copy, 0444) == 0 ? PathOf(copy) : path;
}

/// One of the servers that PULSE_SERVER names: "{machine}unix:/path", "/path", "tcp:host".
std::string Reachable(const std::string& server) {
    const auto brace = server.find('}');
    const std::size_t machine = server.starts_with('{') && brace != std::string::npos ? brace + 1 : 0;
    std::string path = server.substr(machine);
    if (path.starts_with(kLocal)) path.erase(0, kLocal.size());
    const std::string open = path.starts_with('/') ? OpenSocket(path) : std::string();
    return open.empty() ? server : server.substr(0, machine) + std::string(kLocal) + open;
}

std::string NamedServers() {
    std::istringstream list(Variable("PULSE_SERVER"));
    std::string result;
    for (std::string server; list >> server;) result += (result.empty() ? "" : " ") + Reachable(server);
    return result;
}

/// Where a server's socket is found if none is named.
std::string UsualServer() {
    for (const auto& [variable, path] :
         {std::pair{"PULSE_RUNTIME_PATH", "/native"}, {"XDG_RUNTIME_DIR", "/pulse/native"}}) {
        const std::string folder = Variable(variable);
        const std::string socket = folder.empty() ? "" : OpenSocket(folder + path);
        if (!socket.empty()) return std::string(kLocal) + socket;
    }
    return {};
}

}  // namespace

void KeepSoundServerReachable() {
    const std::string servers = Variable("PULSE_SERVER").empty() ? UsualServer() : NamedServers();
    if (!servers.empty()) ::setenv("PULSE_SERVER", servers.c_str(), 1);
    for (const char* variable : {"PULSE_COOKIE", "PULSE_CLIENTCONFIG", "ALSA_CONFIG_PATH"}) {
        std::istringstream list(Variable(variable));
        std::string copies;
        for (std::string path; std::getline(list, path, ':');) {
            const bool systems = path.starts_with("/usr/") || path.starts_with("/etc/");
            copies += (copies.empty() ? "" : ":") + (systems ? path : Copy(path));
        }
        if (!copies.empty()) ::setenv(variable, copies.c_str(), 1);
    }
    // Libraries refuse a folder that is another user's, and would make one in its place.
    ::unsetenv("PULSE_RUNTIME_PATH");
    ::setenv("XDG_RUNTIME_DIR", "/dev/null", 1);
}

}  // namespace sorakaze::viewer
