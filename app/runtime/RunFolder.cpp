// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/RunFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <system_error>

#include "app/runtime/process/RemoveTree.h"

namespace sorakaze {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "sorakaze-run-";
constexpr std::string_view kPattern = "XXXXXX";

/// What is left then is for the next start.
constexpr std::chrono::milliseconds kLongestClearing{500};

/// Opens and locks the folder of a run; negative where somebody holds it, or it isn't one of this user's.
int LockFolder(const fs::path& path) {
    const int folder = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0) return -1;
    struct stat status {};
    // Commands that run under a user of their own may have to pass through it.
    const bool isOurs = ::fstat(folder, &status) == 0 && status.st_uid == ::geteuid() &&
                        (status.st_mode & 07777 & ~static_cast<mode_t>(S_IXGRP)) == S_IRWXU;
    if (isOurs && ::flock(folder, LOCK_EX | LOCK_NB) == 0) return folder;
    ::close(folder);
    return -1;
}

bool IsRunsName(const std::string& name) {
    return name.size() == kPrefix.size() + kPattern.size() && name.starts_with(kPrefix);
}

void ClearLeftovers(const fs::path& parent) {
    const auto end = std::chrono::steady_clock::now() + kLongestClearing;
    std::error_code failure;
    for (auto entry = fs::directory_iterator(parent, failure); !failure && entry != fs::directory_iterator();
         entry.increment(failure)) {
        if (!IsRunsName(entry->path().filename())) continue;
        const int lock = LockFolder(entry->path());
        if (lock < 0) continue;
        process::RemoveTree(entry->path());
        ::close(lock);
        if (std::chrono::steady_clock::now() > end) return;
    }
}

}  // namespace

std::unique_ptr<RunFolder> RunFolder::Make() {
    std::error_code failure;
    const fs::path parent = fs::temp_directory_path(failure);
    if (failure) return nullptr;
    ClearLeftovers(parent);
    // Another run may take a new folder for a dead one's, until it is locked.
    for (int attempt = 0; attempt < 16; ++attempt) {
        std::string name = parent / (std::string(kPrefix) + std::string(kPattern));
        if (!::mkdtemp(name.data())) return nullptr;
        const int lock = LockFolder(name);
        if (lock < 0) continue;
        std::unique_ptr<RunFolder> made(new RunFolder(name, lock));
        if (::mkdir(made->Files().c_str(), S_IRWXU) == 0) return made;
    }
    return nullptr;
}

RunFolder::RunFolder(fs::path path, int lock) : path_(std::move(path)), lock_(lock) {}

RunFolder::~RunFolder() {
    process::RemoveTree(path_);
    ::close(lock_);
}

}  // namespace sorakaze
