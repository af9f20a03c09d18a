// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/ViewPlan.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>

#include "process/CommandUser.h"
#include "process/LaunchPlan.h"
#include "process/Workspace.h"

namespace sorakaze::process {
namespace {

namespace fs = std::filesystem;

// What programs need of the system, and nothing of its users: programs, libraries, the loader's cache, the
// choices between alternatives, the time zone, and the dictionary of the readings.
constexpr const char* kSystemPaths[] = {"/usr",
                                        "/bin",
                                        "/sbin",
                                        "/lib",
                                        "/lib32",
                                        "/lib64",
                                        "/libx32",
                                        "/etc/ld.so.cache",
                                        "/etc/ld.so.conf",
                                        "/etc/ld.so.conf.d",
                                        "/etc/alternatives",
                                        "/etc/localtime",
                                        "/etc/timezone",
                                        "/etc/mecabrc",
                                        "/var/lib/mecab"};
constexpr const char* kReadableDevices[] = {"/dev/zero", "/dev/random", "/dev/urandom"};
constexpr const char* kProcessLinks[][2] = {{"dev/fd", "/proc/self/fd"},
                                            {"dev/stdin", "/proc/self/fd/0"},
                                            {"dev/stdout", "/proc/self/fd/1"},
                                            {"dev/stderr", "/proc/self/fd/2"}};

/// Under the name it was given and, where links lead there, under its real one.
void AddPath(VisiblePaths& all, const fs::path& given, Access access) {
    if (given.empty()) return;
    const fs::path path = Absolute(given);
    std::error_code failure;
    const fs::path real = fs::canonical(path, failure);
    if (failure || real == "/") return;
    all.paths.push_back({path, access});
    if (real != path) all.paths.push_back({real, access});
}

bool Within(const fs::path& path, const fs::path& folder) {
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first == folder.end();
}

ViewStep::Kind MountKind(Access access) {
    switch (access) {
        case Access::Read:
            return ViewStep::MountReadOnly;
        case Access::Write:
            return ViewStep::MountFolder;
        case Access::WriteFile:
            return ViewStep::MountOutput;
        default:
            return ViewStep::MountDevice;
    }
}

bool ModesAllowOthers(const struct stat& status) {
    mode_t needed = S_IROTH;
    if (S_ISDIR(status.st_mode) || (status.st_mode & (S_IXUSR | S_IXGRP))) needed |= S_IXOTH;
    return (status.st_mode & needed) == needed;
}

/// Whether the modes of a file, or of a folder and all in it, let everybody read it and run it.
bool IsOpen(const fs::path& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return true;
    if (!ModesAllowOthers(status)) return false;
    std::error_code failure;
    if (S_ISDIR(status.st_mode))
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path, failure))
            if (::lstat(entry.path().c_str(), &status) == 0 && !S_ISLNK(status.st_mode) &&
                !ModesAllowOthers(status))
                return false;
    return true;
}

bool AncestorsAreOpen(const fs::path& path) {
    for (fs::path folder = path.parent_path();; folder = folder.parent_path()) {
        struct stat status {};
        if (::stat(folder.c_str(), &status) == 0 && !(status.st_mode & S_IXOTH)) return false;
        if (folder == folder.root_path()) return true;
    }
}

/// The steps of one view, in order.
class Steps {
  public:
    Steps(LaunchPlan& plan, const VisiblePaths& all) : plan_(plan), all_(all) {}

    void AddLinks() {
        for (const SystemLink& link : all_.links) {
            MakeFolders(link.path.parent_path());
            Add(ViewStep::MakeLink, link.path, link.target);
        }
        MakeFolders("/dev");
        MakeFolders("/proc");
        for (const auto& [path, target] : kProcessLinks) {
            plan_.view.push_back({ViewStep::MakeLink, path, target});
            made_.insert(fs::path("/") / path);
        }
    }

    /// Outer paths come before what lies in them.
    void AddPath(const PathRule& rule) {
        // Below a link of the system's it is in the view under its real name.
        if (std::any_of(all_.links.begin(), all_.links.end(),
                        [&](const SystemLink& link) { return Within(rule.path, link.path); }))
            return;
        const auto outer = std::find_if(mounted_.rbegin(), mounted_.rend(),
                                        [&](const PathRule& other) { return Within(rule.path, other.path); });
        const bool isFolder = rule.access == Access::Write || fs::is_directory(rule.path);
        if (outer == mounted_.rend() || outer->access == Access::Write) {
            if (IsClosed(rule)) return AddCopy(rule.path, isFolder);
            MakeFolders(isFolder ? rule.path : rule.path.parent_path());
            if (!isFolder) Add(ViewStep::MakeFile, rule.path, {});
        } else if (outer->access == rule.access) {
            return;
        }
        Add(MountKind(rule.access), rule.path, rule.path);
        mounted_.push_back(rule);
    }

    /// Bytes that the view's own file system has to hold beside its folders.
    std::uint64_t CopiedBytes() const { return copied_; }

  private:
    void Add(ViewStep::Kind kind, const fs::path& path, const fs::path& source) {
        plan_.view.push_back(
            {kind, plan_.Keep(path.relative_path()), source.empty() ? nullptr : plan_.Keep(source)});
    }

    void MakeFolders(const fs::path& folder) {
        fs::path path = "/";
        for (const fs::path& name : folder.relative_path()) {
            path /= name;
            if (made_.insert(path).second) Add(ViewStep::MakeFolder, path, {});
        }
    }

    bool IsClosed(const PathRule& rule) const {
        return rule.access == Access::Read &&
               std::find(all_.unreadable.begin(), all_.unreadable.end(), rule.path) != all_.unreadable.end();
    }

    void AddCopy(const fs::path& path, bool isFolder) {
        MakeFolders(isFolder ? path : path.parent_path());
        if (!isFolder) return AddFileCopy(path);
        std::vector<fs::path> inside;
        std::error_code failure;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path, failure))
            inside.push_back(entry.path());
        for (const fs::path& entry : inside) {
            const fs::file_type type = fs::symlink_status(entry, failure).type();
            if (type == fs::file_type::directory) MakeFolders(entry);
            if (type == fs::file_type::regular) AddFileCopy(entry);
            if (type == fs::file_type::symlink && made_.insert(entry).second)
                Add(ViewStep::MakeLink, entry, fs::read_symlink(entry, failure));
        }
    }

    void AddFileCopy(const fs::path& file) {
        std::error_code failure;
        copied_ += (fs::file_size(file, failure) / kBlock + 1) * kBlock;
        Add(ViewStep::CopyFile, file, file);
    }

    static constexpr std::uint64_t kBlock = 4096;
    LaunchPlan& plan_;
    const VisiblePaths& all_;
    std::set<fs::path> made_;
    std::vector<PathRule> mounted_;
    std::uint64_t copied_ = 0;
};

/// Of the file system that is the command's folder.
std::string FolderOptions(const LaunchPlan& plan, const Confinement& confinement) {
    const auto user = plan.asRoot ? plan.user : ::geteuid();
    const auto group = plan.asRoot ? plan.user : ::getegid();
    return "mode=0700,nr_inodes=4096,size=" + std::to_string(confinement.folderSize) +
           ",uid=" + std::to_string(user) + ",gid=" + std::to_string(group);
}

}  // namespace

fs::path Absolute(const fs::path& path) {
    fs::path result = fs::absolute(path).lexically_normal();
    return result.has_filename() || result == "/" ? result : result.parent_path();
}

VisiblePaths VisiblePathsFor(const Confinement* confinement, const Workspace* workspace) {
    VisiblePaths all;
    for (const char* path : kSystemPaths) {
        std::error_code failure;
        const fs::file_status status = fs::symlink_status(path, failure);
        if (fs::is_symlink(status))
            all.links.push_back({path, fs::read_symlink(path, failure)});
        else if (fs::exists(status))
            all.paths.push_back({path, Access::Read});
    }
    for (const char* path : kReadableDevices) all.paths.push_back({path, Access::ReadDevice});
    all.paths.push_back({"/dev/null", Access::WriteDevice});
    if (confinement) {
        const std::size_t own = all.paths.size();
        for (const fs::path& path : confinement->readable) AddPath(all, path, Access::Read);
        for (std::size_t at = own; CommandUser() && at < all.paths.size(); ++at)
            if (!IsOpen(all.paths[at].path)) all.unreadable.push_back(all.paths[at].path);
    }
    if (workspace && workspace->FolderIsOnDisk()) all.paths.push_back({workspace->Folder(), Access::Write});
    if (workspace && !workspace->Output().empty())
        all.paths.push_back({workspace->Output(), Access::WriteFile});
    return all;
}

void PlanView(LaunchPlan& plan, VisiblePaths all, const Confinement* confinement,
              const Workspace* workspace) {
    if (confinement && workspace) {
        all.paths.push_back({workspace->Folder(), Access::Write});
        plan.folderOptions = plan.Keep(FolderOptions(plan, *confinement));
    }
    std::stable_sort(all.paths.begin(), all.paths.end(),
                     [](const PathRule& a, const PathRule& b) { return a.path < b.path; });
    Steps steps(plan, all);
    steps.AddLinks();
    for (const PathRule& rule : all.paths) steps.AddPath(rule);
    constexpr std::uint64_t kFoldersAndLinks = 1 << 20;
    plan.viewOptions =
        plan.Keep("mode=0755,nr_inodes=8192,size=" + std::to_string(kFoldersAndLinks + steps.CopiedBytes()));
}

bool OthersCanUse(const Confinement& confinement, const Workspace* workspace) {
    // The run's folder and the one that holds it let commands pass.
    if (workspace && workspace->FolderIsOnDisk() &&
        !AncestorsAreOpen(fs::canonical(workspace->Folder()).parent_path().parent_path()))
        return false;
    return std::all_of(confinement.readable.begin(), confinement.readable.end(), [](const fs::path& path) {
        std::error_code failure;
        const fs::path real = fs::canonical(path, failure);
        return failure || (AncestorsAreOpen(real) && IsOpen(real));
    });
}

}  // namespace sorakaze::process
