// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/CommandCache.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace sorakaze {
namespace {

constexpr std::size_t kMost = 20'000;
/// Of the sentences of a rendered show: a quarter of an hour of speech.
constexpr std::uintmax_t kMostBytes = 64u << 20;

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

bool CommandCache::IsSpeech(std::string_view command) {
    constexpr std::string_view kBegin = "say -v ", kAfterText = "\" -o ";
    if (!command.starts_with(kBegin)) return false;
    const auto text = command.find('"');
    const auto end = command.find('"', text + 1);
    if (text == command.npos || end == command.npos) return false;
    // Any other text that holds a quotation mark leaves one behind the file's name.
    const auto rest = command.substr(end);
    return command.substr(kBegin.size(), text - kBegin.size()).find_first_of("$`\\;|&<>()'\n") ==
               command.npos &&
           command.substr(text, end - text).find_first_of("$`\\") == command.npos &&
           rest.starts_with(kAfterText) && rest.find('"', 1) == rest.npos;
}

bool CommandCache::Covers(const std::string& command) const {
    return scope_ == Scope::Everything || IsSpeech(command);
}

std::optional<CommandCache::Outcome> CommandCache::Repeat(const std::string& command,
                                                          const std::filesystem::path& output) {
    if (!Covers(command)) return std::nullopt;
    const auto found = known_.find(KeyOf(command, output));
    if (found == known_.end()) return std::nullopt;
    Entry& entry = found->second;
    entry.lastUsed = ++uses_;
    if (entry.outcome.file.empty()) return entry.outcome;
    std::error_code failure;
    std::filesystem::create_hard_link(entry.outcome.file, output, failure);
    return failure ? std::nullopt : std::optional(entry.outcome);
}

void CommandCache::Keep(const std::string& command, Outcome outcome, const std::filesystem::path& output) {
    if (!folder_ || !Covers(command) || known_.size() >= kMost) return;
    std::error_code failure;
    const bool hasFile = std::filesystem::is_regular_file(output, failure);
    // What failed may succeed the next time; `say` leaves a file only if it is complete.
    if (scope_ == Scope::Speech && !hasFile) return;
    Entry entry{{}, 0, ++uses_};
    if (hasFile) {
        entry.size = std::filesystem::file_size(output, failure);
        outcome.file = folder_->Files() / std::to_string(made_++);
        if (!failure) std::filesystem::create_hard_link(output, outcome.file, failure);
        if (failure) return;
    }
    entry.outcome = std::move(outcome);
    const auto [at, isNew] = known_.emplace(KeyOf(command, output), std::move(entry));
    if (!isNew) return;
    size_ += at->second.size;
    if (scope_ == Scope::Speech) MakeRoom();
}

void CommandCache::MakeRoom() {
    while (size_ > kMostBytes) {
        const auto oldest = std::min_element(known_.begin(), known_.end(), [](const auto& a, const auto& b) {
            return a.second.lastUsed < b.second.lastUsed;
        });
        std::error_code ignored;
        std::filesystem::remove(oldest->second.outcome.file, ignored);
        size_ -= oldest->second.size;
        known_.erase(oldest);
    }
}

}  // namespace sorakaze
