// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/program/Confinement.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <system_error>

#include "app/viewer/program/DropRoot.h"
#include "app/viewer/program/ProcessIsolation.h"
#include "app/viewer/program/SoundServer.h"
#include "process/LandlockRules.h"
#include "process/LandlockScopes.h"

namespace sorakaze::viewer {
namespace {

using process::Access;

/// The last version that rules files alone: the scopes and ports of later ones have rules of their own.
constexpr int kFilesAlone = 3;

// Of the settings of a machine what libraries ask for, and no folder that could hold a secret. All of /proc:
// each process has its own files there, and those of others that tell anything the kernel refuses.
constexpr const char* kReadable[] = {"/usr",
                                     "/lib",
                                     "/lib32",
                                     "/lib64",
                                     "/bin",
                                     "/proc",
                                     "/sys/devices/system",
                                     "/var/cache/fontconfig",
                                     "/var/lib/dbus/machine-id",
                                     "/etc/ld.so.cache",
                                     "/etc/alternatives",
                                     "/etc/fonts",
                                     "/etc/localtime",
                                     "/etc/timezone",
                                     "/etc/machine-id",
                                     "/etc/resolv.conf",
                                     "/etc/hosts",
                                     "/etc/host.conf",
                                     "/etc/nsswitch.conf",
                                     "/etc/gai.conf",
                                     "/etc/services",
                                     "/etc/protocols",
                                     "/etc/ssl/certs",
                                     "/etc/ssl/openssl.cnf",
                                     "/etc/ca-certificates",
                                     "/etc/pki/nssdb",
                                     "/etc/pki/tls/certs",
                                     "/etc/pki/ca-trust/extracted/pem",
                                     "/etc/pulse",
                                     "/etc/alsa",
                                     "/etc/asound.conf"};

std::vector<process::PathRule> SystemPaths() {
    std::vector<process::PathRule> paths;
    for (const char* path : kReadable) paths.push_back({path, Access::Read});
    for (const char* path : {"/dev/urandom", "/dev/random", "/dev/zero"})
        paths.push_back({path, Access::ReadDevice});
    for (const char* path : {"/dev/null", "/dev/snd"}) paths.push_back({path, Access::WriteDevice});
    // The engine's sandbox writes the maps of its user namespace. Processes of other users stay out of reach.
    paths.push_back({"/proc", Access::WriteDevice});
    paths.push_back({"/dev/shm", Access::Write});  // shared memory, without a name as soon as it is there
    return paths;
}

/// What a variable's list of paths names may be read.
void AddPathsOf(const char* variable, std::vector<process::PathRule>& paths) {
    const char* value = std::getenv(variable);
    std::istringstream list(value ? value : "");
    for (std::string path; std::getline(list, path, ':');)
        if (!path.empty() && !path.starts_with("/proc/")) paths.push_back({path, Access::Read});
}

void Enforce(const FileDescriptor& rules) {
    if (rules && !process::EnforceLandlock(rules.Get()))
        throw std::system_error(errno, std::generic_category(), "landlock_restrict_self");
}

}  // namespace

void Confine(const std::optional<std::vector<std::uint16_t>>& ports) {
    const int version = process::LandlockVersion();
    FileDescriptor files, scopes;
    if (::geteuid() == 0) KeepSoundServerReachable();
    if (version > 0) {
        auto paths = SystemPaths();
        for (const char* variable : {"LD_LIBRARY_PATH", "QT_PLUGIN_PATH", "QTWEBENGINEPROCESS_PATH",
                                     "QTWEBENGINE_RESOURCES_PATH", "QTWEBENGINE_LOCALES_PATH", "PULSE_COOKIE",
                                     "PULSE_CLIENTCONFIG", "PULSE_RUNTIME_PATH", "ALSA_CONFIG_PATH"}) {
            AddPathsOf(variable, paths);
        }
        if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"))
            paths.push_back({std::filesystem::path(runtime) / "pulse", Access::Read});
        files = process::MakeLandlockRules(std::min(version, kFilesAlone), paths);
        scopes = process::MakeLandlockScopes(version, ports);
    }
    DropRoot();
    // What the kernel asks of whoever gives up rights without being root.
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    Enforce(files);
    Enforce(scopes);
    IsolateFromOtherProcesses(ports ? Datagrams::Refused : Datagrams::Allowed);
}

}  // namespace sorakaze::viewer
