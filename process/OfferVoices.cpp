// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "process/OfferVoices.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <system_error>
#include <thread>

#include "process/VoicePlaces.h"

namespace sorakaze::process {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostEntries = 1000;  // of a folder

/// What a runtime for neural models reserves, as measured with room to spare. What it uses is bounded by
/// `memory` as ever.
constexpr std::uint64_t kAddressesOfRuntime = 32ull << 30;
constexpr std::chrono::seconds kProcessorTimeOfRuntime{120};

template <typename Visit>
void ForEachEntry(const fs::path& folder, Visit visit) {
    std::error_code failure;
    std::size_t count = 0;
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end && count < kMostEntries;
         entry.increment(failure), ++count)
        visit(*entry);
}

bool Within(const fs::path& path, const fs::path& folder) {
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first == folder.end();
}

bool HoldsModel(const fs::path& voice) {
    bool found = false;
    ForEachEntry(voice, [&](const fs::directory_entry& entry) {
        found = found || entry.path().extension() == ".onnx";
    });
    return found;
}

/// Where a link leads, if that is a folder that may be read; else an empty path.
fs::path TargetOf(const fs::path& link, const fs::path& resources) {
    std::error_code failure;
    const fs::path target = fs::canonical(link, failure);
    const char* const home = std::getenv("HOME");
    if (failure || !fs::is_directory(target, failure) || Within(fs::canonical(resources, failure), target) ||
        (home && Within(fs::weakly_canonical(home, failure), target)))
        return {};
    return target;
}

}  // namespace

void OfferVoices(Confinement& confinement, const fs::path& resources) {
    std::string told;
    bool hasModel = false;
    for (const fs::path& place : VoicePlaces(resources)) {
        confinement.readable.push_back(place);
        told += (told.empty() ? "" : ":") + place.string();
        ForEachEntry(place, [&](const fs::directory_entry& entry) {
            std::error_code failure;
            if (!entry.is_directory(failure)) return;
            hasModel = hasModel || HoldsModel(entry.path());
            if (!entry.is_symlink(failure)) return;
            if (fs::path target = TargetOf(entry.path(), resources); !target.empty())
                confinement.readable.push_back(std::move(target));
        });
    }
    confinement.variables.push_back(std::string(kVoicesVariable) + '=' + told);
    if (!hasModel) return;
    confinement.addressSpace = std::max(confinement.addressSpace, kAddressesOfRuntime);
    confinement.processorTime = std::max(confinement.processorTime, kProcessorTimeOfRuntime);
    // A runtime starts a thread for each core.
    confinement.processes += std::thread::hardware_concurrency();
}

}  // namespace sorakaze::process
