// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What a command may see of the file system, and the steps that make a view of nothing else.
#pragma once

#include <filesystem>
#include <vector>

#include "process/ConfinedProcess.h"
#include "process/LandlockRules.h"

namespace sorakaze::process {

struct LaunchPlan;
class Workspace;

/// A link of the system's own.
struct SystemLink {
    std::filesystem::path path;
    std::filesystem::path target;
};

struct VisiblePaths {
    std::vector<PathRule> paths;
    std::vector<SystemLink> links;
    /// Of these a view holds copies: as root, the commands' user may not use the paths themselves.
    std::vector<std::filesystem::path> unreadable;
};

std::filesystem::path Absolute(const std::filesystem::path& path);

/// The system's paths; with a confinement what that adds, with a workspace its output and, where that is on
/// the disk, its folder. Either may be null.
VisiblePaths VisiblePathsFor(const Confinement* confinement, const Workspace* workspace);

/// Adds the steps that make the view to the plan, which has its user. Both may be null, as above. Throws
/// std::filesystem::filesystem_error.
void PlanView(LaunchPlan& plan, VisiblePaths all, const Confinement* confinement, const Workspace* workspace);

/// Whether the workspace, which may be null, is reached, and the paths that the confinement adds are reached
/// and read, or run, by whoever isn't their owner.
bool OthersCanUse(const Confinement& confinement, const Workspace* workspace);

}  // namespace sorakaze::process
