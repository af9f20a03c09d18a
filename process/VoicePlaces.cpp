// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/VoicePlaces.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <system_error>

namespace sorakaze::process {
namespace {

namespace fs = std::filesystem;

/// Empty for a variable that isn't set, or names no absolute path.
fs::path PathInEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value && value[0] == '/' ? fs::path(value) : fs::path();
}

void AddIfThere(std::vector<fs::path>& places, const fs::path& place) {
    std::error_code failure;
    if (!place.is_absolute() || !fs::is_directory(place, failure)) return;
    if (std::find(places.begin(), places.end(), place) == places.end()) places.push_back(place);
}

}  // namespace

std::vector<fs::path> VoicePlaces(const fs::path& resources) {
    std::vector<fs::path> places;
    const fs::path application = fs::absolute(resources).parent_path().parent_path();
    if (application.extension() == ".app") AddIfThere(places, application.parent_path() / "Voices");
    AddIfThere(places, fs::absolute(resources) / "Voices");
    fs::path data = PathInEnvironment("XDG_DATA_HOME");
    const fs::path home = PathInEnvironment("HOME");
    if (data.empty() && !home.empty()) data = home / ".local/share";
    for (const fs::path& folder : {data, fs::path("/usr/local/share"), fs::path("/usr/share")})
        AddIfThere(places, folder / "sorakaze/Voices");
    return places;
}

std::vector<fs::path> VoicePlacesOfCommand() {
    std::vector<fs::path> places;
    const char* value = std::getenv(kVoicesVariable);
    std::string rest = value ? value : "";
    while (!rest.empty()) {
        const auto colon = rest.find(':');
        AddIfThere(places, rest.substr(0, colon));
        rest.erase(0, colon == std::string::npos ? colon : colon + 1);
    }
    return places;
}

}  // namespace sorakaze::process
