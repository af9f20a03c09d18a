// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/Footprint.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "process/FolderListing.h"

namespace sorakaze::process {
namespace {

namespace fs = std::filesystem;

/// More than it takes up: many entries take long to remove.
constexpr std::uint64_t kLeastEntry = 64 << 10;
constexpr int kDeepest = 64;

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

/// What a process maps of something that it may share, as one line of its maps tells.
struct Mapping {
    std::uint64_t begin = 0, end = 0, offset = 0;
    std::string rights, device, inode, path;

    bool IsShared() const { return rights.size() == 4 && rights[3] == 's'; }
    bool IsGone() const { return path.ends_with(" (deleted)"); }
};

std::istream& operator>>(std::istream& lines, Mapping& mapping) {
    char dash = 0;
    lines >> std::hex >> mapping.begin >> dash >> mapping.end >> mapping.rights >> mapping.offset >>
        mapping.device >> mapping.inode;
    std::getline(lines, mapping.path);
    mapping.path.erase(0, mapping.path.find_first_not_of(' '));
    return lines;
}

/// Sums up one command's processes.
class Meter {
  public:
    Meter(const fs::path& folder, std::uint64_t largestFile)
        : folder_(folder.empty() ? "" : folder.string() + '/'), largestFile_(largestFile) {}

    void Add(pid_t process) {
        ++sum_.processes;
        const std::string folder = "/proc/" + std::to_string(process);
        std::ifstream file(folder + "/statm");
        std::uint64_t whole = 0, resident = 0, shared = 0;
        file >> whole >> resident >> shared;
        const auto page = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
        if (!folder_.empty()) AddOpenFiles(folder + "/fd");
        const bool readable = AddMappings(folder + "/maps");
        sum_.memory += (readable ? resident - std::min(shared, resident) : resident) * page;
    }

    ProcessesFootprint Sum() const {
        ProcessesFootprint sum = sum_;
        for (const auto& [inode, extent] : shared_) sum.memory += extent;
        if (hides_) sum.memory = std::numeric_limits<std::uint64_t>::max();
        for (const auto& [inode, extent] : removed_) sum.removedFiles += std::min(extent, largestFile_);
        return sum;
    }

  private:
    void AddOpenFiles(const std::string& path) {
        const Folder folder = OpenFolder(AT_FDCWD, path.c_str());
        while (const dirent* entry = folder ? ::readdir(folder.get()) : nullptr) {
            struct stat status {};
            if (::fstatat(::dirfd(folder.get()), entry->d_name, &status, 0) == 0 && S_ISREG(status.st_mode) &&
                status.st_nlink == 0 && seen_.insert({status.st_dev, status.st_ino}).second)
                sum_.removedFiles += DiskBytes(status);
        }
    }

    /// Pages of shared memory may be in use without being in any process: what is mapped counts, by the
    /// furthest byte of it.
    bool AddMappings(const std::string& path) {
        std::ifstream lines(path);
        unsigned count = 0;
        for (Mapping mapping; lines >> mapping;) {
            if (++count > kMostMappings) {
                hides_ = true;
                return true;
            }
            if (!mapping.IsGone()) continue;
            const std::uint64_t extent = mapping.offset + (mapping.end - mapping.begin);
            if (mapping.path.starts_with("/dev/zero ")) {
                if (mapping.IsShared()) Raise(shared_, mapping, extent);
            } else if (!folder_.empty() && mapping.path.starts_with(folder_)) {
                Raise(removed_, mapping, extent);
            }
        }
        return lines.eof();
    }

    using Extents = std::map<std::string, std::uint64_t>;
    static void Raise(Extents& extents, const Mapping& mapping, std::uint64_t extent) {
        std::uint64_t& known = extents[mapping.device + ' ' + mapping.inode];
        known = std::max(known, extent);
    }

    /// Many times what programs have. Whoever has more wants the sum not to be taken.
    static constexpr unsigned kMostMappings = 8192;

    const std::string folder_;
    const std::uint64_t largestFile_;
    bool hides_ = false;
    ProcessesFootprint sum_;
    std::set<std::pair<dev_t, ino_t>> seen_;  ///< removed files that are open
    Extents shared_;                          ///< of shared memory without a name
    Extents removed_;                         ///< of mapped files that are gone
};

}  // namespace

std::uint64_t FolderBytes(const fs::path& folder, std::uint64_t enough) {
    std::uint64_t sum = 0;
    AddFolder(AT_FDCWD, folder.c_str(), 0, enough, sum);
    return sum;
}

ProcessesFootprint MeasureProcesses(pid_t supervisor, const fs::path& folder, std::uint64_t largestFile) {
    Meter meter(folder, largestFile);
    constexpr unsigned kMost = 4096;
    std::vector<pid_t> waiting = ChildrenOf(supervisor);
    for (unsigned count = 0; !waiting.empty() && count < kMost; ++count) {
        const pid_t process = waiting.back();
        waiting.pop_back();
        meter.Add(process);
        const std::vector<pid_t> children = ChildrenOf(process);
        waiting.insert(waiting.end(), children.begin(), children.end());
    }
    return meter.Sum();
}

}  // namespace sorakaze::process
