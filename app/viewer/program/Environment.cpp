// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/program/Environment.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sorakaze::viewer {
namespace {

/// Where programs and libraries lie, the language, the sound server, and the way to the network.
constexpr std::string_view kKept[] = {
    "PATH",
    "LD_LIBRARY_PATH",
    "QT_PLUGIN_PATH",
    "QTWEBENGINEPROCESS_PATH",
    "QTWEBENGINE_RESOURCES_PATH",
    "QTWEBENGINE_LOCALES_PATH",
    "TZ",
    "LANG",
    "LANGUAGE",
    "LC_ALL",
    "LC_CTYPE",
    "LC_MESSAGES",
    "XDG_RUNTIME_DIR",
    "PULSE_SERVER",
    "PULSE_SINK",
    "PULSE_COOKIE",
    "PULSE_CLIENTCONFIG",
    "PULSE_RUNTIME_PATH",
    "PIPEWIRE_REMOTE",
    "PIPEWIRE_RUNTIME_DIR",
    "ALSA_CONFIG_PATH",
    "ALSA_CARD",
    "http_proxy",
    "https_proxy",
    "all_proxy",
    "no_proxy",
};

/// The user's own settings of the sound system, which are looked for in a home folder unless they are named.
constexpr struct {
    const char* variable;
    const char* fileAtHome;
    const char* before;
} kSoundSettings[] = {
    {"PULSE_COOKIE", ".config/pulse/cookie", ""},
    {"PULSE_CLIENTCONFIG", ".config/pulse/client.conf", ""},
    {"ALSA_CONFIG_PATH", ".asoundrc", "/usr/share/alsa/alsa.conf:"},
};

std::string Variable(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

}  // namespace

void CleanEnvironment() {
    std::vector<std::pair<std::string, std::string>> kept;
    for (const std::string_view name : kKept) {
        if (const char* value = std::getenv(name.data())) kept.emplace_back(name, value);
    }
    const std::filesystem::path home = Variable("HOME");
    for (const auto& [variable, fileAtHome, before] : kSoundSettings) {
        std::error_code none;
        if (!home.empty() && !std::getenv(variable) && std::filesystem::exists(home / fileAtHome, none))
            kept.emplace_back(variable, before + (home / fileAtHome).string());
    }
    for (const char* name :
         {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME"}) {
        kept.emplace_back(name, "/dev/null");  // where not even root can make a folder
    }
    for (const char* name : {"DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"})
        kept.emplace_back(name, "disabled:");
    kept.emplace_back("QT_QPA_PLATFORM", "offscreen");
    kept.emplace_back("QT_QUICK_BACKEND", "software");

    ::clearenv();
    for (const auto& [name, value] : kept) ::setenv(name.c_str(), value.c_str(), 1);
}

}  // namespace sorakaze::viewer
