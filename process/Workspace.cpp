// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/Workspace.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "base/FileDescriptor.h"
#include "process/CommandUser.h"
#include "process/RemoveTree.h"

namespace sorakaze::process {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Throw(const char* what, const fs::path& path) {
    throw fs::filesystem_error(what, path, std::error_code(errno, std::generic_category()));
}

/// Lets the commands' group pass through a folder that is closed to everybody but its owner, the application.
void LetPass(const fs::path& folder, gid_t group) {
    struct stat status {};
    if (::lstat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != ::geteuid() ||
        (status.st_mode & 0777) != S_IRWXU)
        return;
    if (::chown(folder.c_str(), static_cast<uid_t>(-1), group) != 0 ||
        ::chmod(folder.c_str(), S_IRWXU | S_IXGRP) != 0)
        Throw("the folder can't be passed by commands", folder);
}

}  // namespace

Workspace::Workspace(const Confinement& confinement, const Mechanisms& mechanisms)
    : user_(CommandUser()),
      largestOutput_(confinement.fileSize),
      folder_(fs::absolute(confinement.folder).lexically_normal()),
      onDisk_(!mechanisms.view) {
    if (confinement.folder.empty() || !fs::is_directory(folder_)) {
        errno = ENOTDIR;
        Throw("no folder for commands", confinement.folder);
    }
    if (!folder_.has_filename()) folder_ = folder_.parent_path();
    if (!confinement.output.empty()) output_ = folder_ / confinement.output.filename();
    if (onDisk_ && user_) {
        LetPass(folder_.parent_path(), *user_);
        LetPass(folder_, *user_);
    }
    if (!output_.empty()) MakeOutput();
    try {
        if (onDisk_) MakeFolder();
    } catch (...) {
        if (!output_.empty()) ::unlink(output_.c_str());
        throw;
    }
}

Workspace::~Workspace() {
    if (onDisk_) RemoveTree(folder_);
    if (!output_.empty() && !taken_) ::unlink(output_.c_str());
}

void Workspace::MakeOutput() {
    ::unlink(output_.c_str());
    const FileDescriptor file(
        ::open(output_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file) Throw("a command's file can't be made", output_);
    if (user_ && ::fchown(file.Get(), *user_, *user_) != 0) {
        ::unlink(output_.c_str());
        Throw("a command's file can't be given to its user", output_);
    }
}

void Workspace::MakeFolder() {
    std::string name = folder_ / ".command-XXXXXX";
    if (!::mkdtemp(name.data())) Throw("a command's folder can't be made", folder_);
    if (user_ && ::chown(name.c_str(), *user_, *user_) != 0) {
        ::rmdir(name.c_str());
        Throw("a command's folder can't be given to its user", folder_);
    }
    folder_ = name;
}

void Workspace::TakeOutput() {
    if (output_.empty()) return;
    // Opened for nothing but its name: the command may have taken away every right.
    const FileDescriptor file(::open(output_.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_nlink != 1 ||
        status.st_uid != user_.value_or(::geteuid()) || status.st_size == 0 ||
        static_cast<std::uint64_t>(status.st_size) > largestOutput_)
        return;
    const std::string path = "/proc/self/fd/" + std::to_string(file.Get());
    // The owner first: a change of the owner may change the mode.
    taken_ = (!user_ || ::chown(path.c_str(), ::geteuid(), ::getegid()) == 0) &&
             ::chmod(path.c_str(), S_IRUSR | S_IWUSR) == 0;
}

}  // namespace sorakaze::process
