// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/program/Confinement.h"

#include <sys/prctl.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "app/runtime/process/LandlockRules.h"

namespace sorakaze::viewer {
namespace {

using process::Access;

/// The last version that rules files alone: later ones would take the network and the sound server away.
constexpr int kFilesAlone = 3;

std::vector<process::Place> SystemPlaces() {
    std::vector<process::Place> places;
    for (const char* path : {"/usr", "/lib", "/lib32", "/lib64", "/bin", "/opt", "/etc", "/proc", "/sys",
                             "/var/cache/fontconfig", "/var/lib/dbus", "/run/pulse", "/run/systemd/resolve",
                             "/run/resolvconf", "/run/NetworkManager"}) {
        places.push_back({path, Access::Read});
    }
    for (const char* path : {"/dev/urandom", "/dev/random", "/dev/zero"})
        places.push_back({path, Access::ReadDevice});
    for (const char* path : {"/dev/null", "/dev/snd"}) places.push_back({path, Access::WriteDevice});
    places.push_back({"/dev/shm", Access::Write});  // shared memory, without a name as soon as it is there
    return places;
}

/// What a variable's list of paths names may be read.
void AddPathsOf(const char* variable, std::vector<process::Place>& places) {
    const char* value = std::getenv(variable);
    std::istringstream list(value ? value : "");
    for (std::string path; std::getline(list, path, ':');)
        if (!path.empty()) places.push_back({path, Access::Read});
}

}  // namespace

void ConfineToFilesOf(const std::filesystem::path& page) {
    const int version = std::min(process::LandlockVersion(), kFilesAlone);
    if (version == 0) return;
    auto places = SystemPlaces();
    places.push_back({page, Access::Read});
    for (const char* variable : {"LD_LIBRARY_PATH", "QT_PLUGIN_PATH", "QTWEBENGINEPROCESS_PATH",
                                 "QTWEBENGINE_RESOURCES_PATH", "QTWEBENGINE_LOCALES_PATH", "PULSE_COOKIE",
                                 "PULSE_CLIENTCONFIG", "PULSE_RUNTIME_PATH", "ALSA_CONFIG_PATH"}) {
        AddPathsOf(variable, places);
    }
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"))
        places.push_back({std::filesystem::path(runtime) / "pulse", Access::Read});
    const auto rules = process::MakeLandlockRules(version, places);
    // What the kernel asks of whoever gives up rights without being root.
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    if (!process::EnforceLandlock(rules.Get()))
        throw std::system_error(errno, std::generic_category(), "landlock_restrict_self");
}

}  // namespace sorakaze::viewer
