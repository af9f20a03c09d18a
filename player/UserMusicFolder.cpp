// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/UserMusicFolder.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "player/PlaylistParsers.h"

namespace sorakaze::player {

namespace {

constexpr std::string_view kKey = "XDG_MUSIC_DIR";

std::filesystem::path Home() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home == '/') return home;
    const passwd* user = ::getpwuid(::getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

/// A shell word in double quotes without the quotes and the backslashes that protect characters.
std::string Unquoted(std::string_view word) {
    std::string plain;
    if (!word.starts_with('"')) return plain;
    for (std::size_t i = 1; i < word.size() && word[i] != '"'; ++i) {
        if (word[i] == '\\' && i + 1 < word.size()) ++i;
        plain += word[i];
    }
    return plain;
}

std::string_view WithoutLeadingBlanks(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    return first == std::string_view::npos ? std::string_view{} : text.substr(first);
}

/// The last setting counts, as in the shell that these files are written for.
std::string MusicSetting(std::string_view userDirs) {
    std::string setting;
    for (std::string_view rest = userDirs; !rest.empty();) {
        std::string_view line = WithoutLeadingBlanks(TakeLine(rest));
        if (!line.starts_with(kKey)) continue;
        line = WithoutLeadingBlanks(line.substr(kKey.size()));
        if (line.starts_with('=')) setting = Unquoted(WithoutLeadingBlanks(line.substr(1)));
    }
    return setting;
}

}  // namespace

std::filesystem::path MusicFolderFrom(std::string_view userDirs, const std::filesystem::path& home) {
    constexpr std::string_view kHomeWord = "$HOME";
    const std::string setting = MusicSetting(userDirs);
    std::filesystem::path folder;
    if (setting.starts_with(kHomeWord) &&
        (setting.size() == kHomeWord.size() || setting[kHomeWord.size()] == '/')) {
        folder = home.string() + setting.substr(kHomeWord.size());
    } else if (setting.starts_with('/')) {
        folder = setting;
    } else {
        return home.empty() ? home : home / "Music";
    }
    const auto bare = [](const std::filesystem::path& path) {
        return (path.lexically_normal() / "").lexically_normal();
    };
    return bare(folder) == bare(home) ? std::filesystem::path{} : folder;
}

std::filesystem::path UserMusicFolder() {
    const std::filesystem::path home = Home();
    const char* set = std::getenv("XDG_CONFIG_HOME");
    const std::filesystem::path config = set != nullptr && *set == '/' ? set : home / ".config";
    std::ifstream file(config / "user-dirs.dirs", std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    return MusicFolderFrom(content, home);
}

}  // namespace sorakaze::player
