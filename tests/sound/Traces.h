// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What decoders leave in the application's process, and which processes they are.
#pragma once

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/Await.h"

namespace sorakaze::sound::testing {

/// The processes whose parent is `parent`, ended ones that nobody has taken in among them.
inline std::vector<pid_t> ChildrenOf(pid_t parent) {
    std::vector<pid_t> children;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
        if (std::atoi(entry.path().filename().c_str()) == 0) continue;
        std::ifstream stat(entry.path() / "stat");
        std::string line;
        std::getline(stat, line);
        const std::size_t name = line.rfind(") ");
        if (name == std::string::npos || std::atoi(line.c_str() + name + 4) != parent) continue;
        children.push_back(std::atoi(line.c_str()));
    }
    return children;
}

/// Of every decoder program that this process runs.
inline std::vector<pid_t> Workers() {
    std::vector<pid_t> workers;
    for (const pid_t program : ChildrenOf(::getpid()))
        for (const pid_t worker : ChildrenOf(program)) workers.push_back(worker);
    return workers;
}

struct Traces {
    std::ptrdiff_t descriptors, children, workers, rings;
    auto operator<=>(const Traces&) const = default;

    static Traces Now() {
        std::ifstream maps("/proc/self/maps");
        std::ptrdiff_t rings = 0;
        for (std::string line; std::getline(maps, line);) rings += line.find("sorakaze-sound") != line.npos;
        return {std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}),
                std::ssize(ChildrenOf(::getpid())), std::ssize(Workers()), rings};
    }
    /// Decoders end by and by: waits until there is no more of anything than in `most`, for a minute.
    static Traces Settled(const Traces& most) {
        Traces now{};
        test::Await([&] {
            now = Now();
            return now.descriptors <= most.descriptors && now.children <= most.children &&
                   now.workers <= most.workers && now.rings <= most.rings;
        });
        return now;
    }
};

inline std::ostream& operator<<(std::ostream& out, const Traces& traces) {
    return out << traces.descriptors << " descriptors, " << traces.children << " children, " << traces.workers
               << " workers, " << traces.rings << " rings";
}

}  // namespace sorakaze::sound::testing
