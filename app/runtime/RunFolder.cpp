// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/RunFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>

#include "process/RemoveTree.h"

namespace sorakaze {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "sorakaze-run-";
constexpr std::string_view kPattern = "XXXXXX";

/// What is left then is for the next start.
constexpr std::chrono::milliseconds kLongestClearing{500};

enum class Lock { Taken, HeldByAnother, Impossible };

Lock Try(int folder) {
    if (::flock(folder, LOCK_EX | LOCK_NB) == 0) return Lock::Taken;
    return errno == EWOULDBLOCK ? Lock::HeldByAnother : Lock::Impossible;
}

/// Opens the folder of a run; empty where it isn't one of this user's.
FileDescriptor OpenFolder(const fs::path& path) {
    FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    // Commands that run under a user of their own may have to pass through it.
    const bool isOurs = folder && ::fstat(folder.Get(), &status) == 0 && status.st_uid == ::geteuid() &&
                        (status.st_mode & 0777 & ~static_cast<mode_t>(S_IXGRP)) == S_IRWXU;
    return isOurs ? std::move(folder) : FileDescriptor();
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
        const FileDescriptor folder = OpenFolder(entry->path());
        if (folder && Try(folder.Get()) == Lock::Taken) process::RemoveTree(entry->path(), end);
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
        FileDescriptor folder = OpenFolder(name);
        if (!folder) {
            ::rmdir(name.c_str());
            continue;
        }
        if (Try(folder.Get()) == Lock::HeldByAnother) continue;
        // A file system without locks serves as well: nobody takes what can't be locked for a dead run's.
        std::unique_ptr<RunFolder> made(new RunFolder(name, std::move(folder)));
        if (::mkdir(made->Files().c_str(), S_IRWXU) == 0) return made;
    }
    return nullptr;
}

RunFolder::RunFolder(fs::path path, FileDescriptor lock) : path_(std::move(path)), lock_(std::move(lock)) {}

RunFolder::~RunFolder() {
    process::RemoveTree(path_);
}

}  // namespace sorakaze
