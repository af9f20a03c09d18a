// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/Rehearse.h"

#include <sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <new>
#include <numeric>
#include <thread>
#include <vector>

#include "app/runtime/Clock.h"
#include "app/runtime/CommandCache.h"
#include "base/FileDescriptor.h"
#include "base/PrintableText.h"
#include "studio/Console.h"
#include "studio/Rehearsal.h"
#include "studio/Render.h"
#include "studio/Station.h"
#include "studio/StudioError.h"

namespace sorakaze::studio {
namespace {

struct Outcome {
    std::uint64_t seed = 0;
    std::int32_t ticks = 0;
    bool ended = false;  ///< by itself
    std::int32_t warnings = 0;
};

class Stage {
  public:
    explicit Stage(const RehearseOptions& options)
        : options_(options), station_(FindStation(options.station)) {}

    Rehearsal Run(std::uint64_t seed, const std::filesystem::path& trace) {
        RenderOptions show;
        show.station = station_;
        show.program = options_.program;
        show.playlist = options_.playlist;
        show.trace = trace;
        show.songSeconds = options_.songSeconds;
        show.limitSeconds = options_.limitSeconds;
        show.seed = seed;
        show.offline = true;
        show.quiet = true;
        Rehearsal rehearsal(station_, commands_);
        show.rehearsal = &rehearsal;
        Render(show);
        return rehearsal;
    }

    Outcome Measure(std::uint64_t seed) {
        const Rehearsal rehearsal = Run(seed, {});
        return {seed, rehearsal.Length(), rehearsal.HasEnded(), rehearsal.Warnings()};
    }

  private:
    const RehearseOptions& options_;
    const std::filesystem::path station_;
    CommandCache commands_{CommandCache::Scope::Everything};
};

void Print(const std::string& line) {
    std::printf("%s\n", Printable(line).c_str());
}

std::string Length(std::int32_t ticks) {
    return ClockText(std::round(static_cast<double>(ticks) / kTicksPerSecond));
}

/// Which of the shows comes next; the processes share it.
class SharedCount {
  public:
    SharedCount() {
        void* memory =
            ::mmap(nullptr, sizeof(Count), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) throw StudioError(kFailed, "There is no memory left.");
        count_ = new (memory) Count(0);
    }
    ~SharedCount() { ::munmap(count_, sizeof(Count)); }
    SharedCount(const SharedCount&) = delete;
    SharedCount& operator=(const SharedCount&) = delete;

    int Next() { return count_->fetch_add(1); }

  private:
    using Count = std::atomic<int>;
    static_assert(Count::is_always_lock_free);
    Count* count_;
};

/// A show's threads run one at a time, and hand over to each other faster where they share a core.
void StayOnOneCore(int number) {
    cpu_set_t all;
    if (::sched_getaffinity(0, sizeof all, &all) != 0) return;
    for (int core = 0; core < CPU_SETSIZE; ++core) {
        if (!CPU_ISSET(core, &all) || number-- > 0) continue;
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(core, &one);
        ::sched_setaffinity(0, sizeof one, &one);
        return;
    }
}

/// In a process of its own, since there is one show at a time in each; `number` counts the processes.
[[noreturn]] void RunShare(const RehearseOptions& options, int number, SharedCount& count, int out) {
    StayOnOneCore(number);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    int status = kDone;
    const auto fail = [&](int with, const char* why) {
        // The others say the same.
        if (number == 0) std::fprintf(stderr, "sorakaze-studio: %s\n", Printable(why).c_str());
        status = with;
    };
    try {
        Stage stage(options);
        for (int i = count.Next(); i < options.seeds; i = count.Next()) {
            const Outcome outcome = stage.Measure(options.seed + static_cast<std::uint64_t>(i));
            if (::write(out, &outcome, sizeof outcome) != sizeof outcome) break;
        }
    } catch (const StudioError& error) {
        fail(error.Status(), error.what());
    } catch (const std::exception& error) {
        fail(kFailed, error.what());
    }
    std::fflush(nullptr);
    ::_exit(status);
}

/// Throws StudioError where a share of them failed, which has told why.
std::vector<Outcome> RunAll(const RehearseOptions& options) {
    const int processes = std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, options.seeds);
    int ends[2];
    if (::pipe(ends) != 0) throw StudioError(kFailed, "No pipe can be made.");
    FileDescriptor in(ends[0]), out(ends[1]);
    SharedCount count;
    std::vector<pid_t> children;
    for (int i = 0; i < processes; ++i) {
        const pid_t child = ::fork();
        if (child == 0) {
            in.Close();
            RunShare(options, i, count, out.Get());
        }
        if (child > 0) children.push_back(child);
    }
    out.Close();
    std::vector<Outcome> outcomes;
    Outcome outcome;
    while (::read(in.Get(), &outcome, sizeof outcome) == sizeof outcome) outcomes.push_back(outcome);
    int failed = static_cast<int>(children.size()) == processes ? kDone : kFailed;
    for (const pid_t child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        if (!WIFEXITED(status))
            failed = kFailed;
        else if (WEXITSTATUS(status) != kDone)
            failed = WEXITSTATUS(status);
    }
    if (failed != kDone) throw StudioError(failed, "Not all shows could be rehearsed.");
    std::ranges::sort(outcomes, {}, &Outcome::seed);
    return outcomes;
}

void PrintSpread(const std::vector<Outcome>& outcomes) {
    auto byLength = outcomes;
    std::ranges::stable_sort(byLength, {}, &Outcome::ticks);
    const auto at = [&](std::size_t part) {
        return Length(byLength[(byLength.size() - 1) * part / 4].ticks);
    };
    Print(std::to_string(outcomes.size()) + " shows: " + at(0) + " (seed " +
          std::to_string(byLength.front().seed) + ") to " + at(4) + " (seed " +
          std::to_string(byLength.back().seed) + "), half of them " + at(1) + " to " + at(3));
    const auto cut = std::ranges::count(outcomes, false, &Outcome::ended);
    if (cut > 0) Print(std::to_string(cut) + " of them have no end of their own");
    const auto odd = std::ranges::count_if(outcomes, [](const Outcome& show) { return show.warnings > 0; });
    if (odd > 0) Print(std::to_string(odd) + " of them have something that looks wrong");
}

}  // namespace

void Rehearse(const RehearseOptions& options) {
    std::uint64_t seed = options.seed;
    if (options.seeds > 1) {
        const auto outcomes = RunAll(options);
        PrintSpread(outcomes);
        if (!options.endAfter) return;
        const auto distance = [&](const Outcome& show) {
            return std::fabs(static_cast<double>(show.ticks) / kTicksPerSecond - *options.endAfter);
        };
        const Outcome& best = *std::ranges::min_element(outcomes, {}, distance);
        seed = best.seed;
        char text[100];
        std::snprintf(text, sizeof text, "nearest to %s: seed %llu, %s (%.1f s beside it)",
                      ClockText(*options.endAfter).c_str(), static_cast<unsigned long long>(seed),
                      Length(best.ticks).c_str(), distance(best));
        Print(text);
    }
    Stage stage(options);
    const Rehearsal rehearsal = stage.Run(seed, options.trace);
    for (const auto& line : rehearsal.Timetable()) Print(line);
    std::string last = "seed " + std::to_string(seed) + ": " + Length(rehearsal.Length());
    if (!rehearsal.HasEnded()) last += ", cut at its limit";
    if (rehearsal.Warnings() > 0)
        last += ", " + std::to_string(rehearsal.Warnings()) + " marked with ! that may be wrong";
    Print(last);
}

}  // namespace sorakaze::studio
