// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/process/Footprint.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

#include "app/runtime/process/Descriptor.h"

namespace sorakaze::process {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kLeastEntry = 4096;
constexpr int kDeepest = 64;

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

Folder OpenFolder(int parent, const char* name) {
    const int descriptor = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    Folder folder(::fdopendir(descriptor));
    if (!folder) ::close(descriptor);
    return folder;
}

bool IsDots(const char* name) {
    return name[0] == '.' && (!name[1] || (name[1] == '.' && !name[2]));
}

std::uint64_t DiskBytes(const struct stat& status) {
    return static_cast<std::uint64_t>(status.st_blocks) * 512;
}

void AddFolder(int parent, const char* name, int depth, std::uint64_t enough, std::uint64_t& sum) {
    if (depth > kDeepest) {
        sum = enough + 1;
        return;
    }
    const Folder folder = OpenFolder(parent, name);
    if (!folder) return;
    while (const dirent* entry = sum > enough ? nullptr : ::readdir(folder.get())) {
        struct stat status {};
        if (IsDots(entry->d_name) ||
            ::fstatat(::dirfd(folder.get()), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        sum += std::max(DiskBytes(status), kLeastEntry);
        if (S_ISDIR(status.st_mode)) AddFolder(::dirfd(folder.get()), entry->d_name, depth + 1, enough, sum);
    }
}

std::vector<pid_t> ChildrenOf(pid_t process) {
    std::vector<pid_t> children;
    const std::string tasks = "/proc/" + std::to_string(process) + "/task";
    const Folder folder = OpenFolder(AT_FDCWD, tasks.c_str());
    while (const dirent* task = folder ? ::readdir(folder.get()) : nullptr) {
        if (IsDots(task->d_name)) continue;
        std::ifstream file(tasks + '/' + task->d_name + "/children");
        children.insert(children.end(), std::istream_iterator<pid_t>(file), {});
    }
    return children;
}

std::uint64_t OwnMemory(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/statm");
    std::uint64_t whole = 0, resident = 0, shared = 0;
    file >> whole >> resident >> shared;
    return resident > shared ? (resident - shared) * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE)) : 0;
}

using File = std::pair<dev_t, ino_t>;

std::uint64_t RemovedBytes(pid_t process, std::set<File>& seen) {
    std::uint64_t sum = 0;
    const std::string path = "/proc/" + std::to_string(process) + "/fd";
    const Folder folder = OpenFolder(AT_FDCWD, path.c_str());
    while (const dirent* entry = folder ? ::readdir(folder.get()) : nullptr) {
        struct stat status {};
        if (::fstatat(::dirfd(folder.get()), entry->d_name, &status, 0) != 0 || !S_ISREG(status.st_mode) ||
            status.st_nlink != 0 || !seen.insert({status.st_dev, status.st_ino}).second)
            continue;
        sum += DiskBytes(status);
    }
    return sum;
}

}  // namespace

std::uint64_t FolderBytes(const fs::path& folder, std::uint64_t enough) {
    std::uint64_t sum = 0;
    AddFolder(AT_FDCWD, folder.c_str(), 0, enough, sum);
    return sum;
}

std::set<std::string> NamesIn(const fs::path& path) {
    std::set<std::string> names;
    const Folder folder = OpenFolder(AT_FDCWD, path.c_str());
    while (const dirent* entry = folder ? ::readdir(folder.get()) : nullptr)
        if (!IsDots(entry->d_name)) names.insert(entry->d_name);
    return names;
}

void RemoveOthers(const fs::path& folder, const std::set<std::string>& kept) {
    for (const std::string& name : NamesIn(folder)) {
        std::error_code failure;
        if (!kept.contains(name)) fs::remove_all(folder / name, failure);
    }
}

ProcessesFootprint MeasureProcesses(pid_t keeper) {
    ProcessesFootprint sum;
    std::set<File> seen;
    constexpr unsigned kMost = 4096;
    std::vector<pid_t> waiting = ChildrenOf(keeper);
    while (!waiting.empty() && sum.processes < kMost) {
        const pid_t process = waiting.back();
        waiting.pop_back();
        ++sum.processes;
        sum.memory += OwnMemory(process);
        sum.removedFiles += RemovedBytes(process, seen);
        const std::vector<pid_t> children = ChildrenOf(process);
        waiting.insert(waiting.end(), children.begin(), children.end());
    }
    return sum;
}

}  // namespace sorakaze::process
