// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <map>
#include <mutex>
#include <string>

namespace sorakaze::station {

/// Puts files into a station's folder beside what a user keeps there. A list in the station's folder says
/// which files are the maker's and what was in them. A file that isn't on the list, or that has been changed
/// since, is the user's: it is neither replaced nor removed. May be used from any thread.
class Installer {
  public:
    /// `list` is relative to `station`. Reads what an earlier run, finished or not, has left.
    Installer(std::filesystem::path station, const std::filesystem::path& list);
    ~Installer();
    Installer(const Installer&) = delete;
    Installer& operator=(const Installer&) = delete;

    /// A place for a file under work, in a folder of the installer's own. It has the name's ending.
    std::filesystem::path Work(const std::filesystem::path& name);

    /// Moves a finished file to `name`, relative to the station.
    void Place(const std::filesystem::path& finished, const std::filesystem::path& name);

    /// Removes the maker's files that were not placed this time, and writes the list.
    void Finish();

  private:
    using Digests = std::map<std::string, std::string>;  ///< by name

    bool IsTheUsers(const std::string& name, const std::string& wanted) const;
    void Save(const std::filesystem::path& list) const;

    std::filesystem::path station_, list_, journal_, work_;
    std::mutex mutex_;  ///< guards the following
    Digests before_;
    Digests placed_;
    int working_ = 0;
};

}  // namespace sorakaze::station
