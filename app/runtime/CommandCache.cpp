// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/CommandCache.h"

#include <system_error>
#include <utility>

namespace sorakaze {
namespace {

constexpr std::size_t kMost = 20'000;

}  // namespace

std::string CommandCache::KeyOf(const std::string& command, const std::filesystem::path& output) {
    std::string key = command;
    const std::string name = output.filename().string();
    if (const auto at = key.rfind(name); !name.empty() && at != std::string::npos) key.erase(at, name.size());
    // The folder is another one in each run.
    const std::string folder = output.parent_path().string();
    if (const auto at = key.rfind(folder); !folder.empty() && at != std::string::npos)
        key.erase(at, folder.size());
    return key;
}

std::optional<CommandCache::Outcome> CommandCache::Repeat(const std::string& command,
                                                          const std::filesystem::path& output) const {
    const auto found = known_.find(KeyOf(command, output));
    if (found == known_.end()) return std::nullopt;
    if (found->second.file.empty()) return found->second;
    std::error_code failure;
    std::filesystem::create_hard_link(found->second.file, output, failure);
    return failure ? std::nullopt : std::optional(found->second);
}

void CommandCache::Keep(const std::string& command, Outcome outcome, const std::filesystem::path& output) {
    if (!folder_ || known_.size() >= kMost) return;
    std::error_code failure;
    if (std::filesystem::is_regular_file(output, failure)) {
        outcome.file = folder_->Files() / std::to_string(known_.size());
        std::filesystem::create_hard_link(output, outcome.file, failure);
        if (failure) return;
    }
    known_.emplace(KeyOf(command, output), std::move(outcome));
}

}  // namespace sorakaze
