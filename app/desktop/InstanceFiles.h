// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A lock and a socket that one user's instances of one station folder share, outside the folder.
#pragma once

#include <QString>
#include <filesystem>
#include <optional>

namespace sorakaze::desktop {

struct InstancePaths {
    QString lock;
    QString socket;
};

/// Named after the folder's canonical path, in the user's runtime directory or, where there is none, in a
/// folder of the user's own (made here, mode 0700) in the home's cache or else among the temporary files.
/// Empty, with a line on standard error, if none of them belongs to this user alone.
std::optional<InstancePaths> PathsOf(const std::filesystem::path& folder);

/// A lock that the system releases when the process ends, however it ends. The file stays.
class FileLock {
  public:
    FileLock() = default;
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    enum class Outcome { Taken, HeldByAnother, Impossible };
    Outcome Try(const QString& path);

  private:
    int file_ = -1;
};

}  // namespace sorakaze::desktop
