// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/check/Check.h"

#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string_view>

#include "app/runtime/Signals.h"
#include "base/PrintableText.h"
#include "studio/StudioError.h"
#include "studio/check/CheckPass.h"

namespace sorakaze::studio {
namespace {

using check::Severity;

constexpr auto kPeriod = std::chrono::milliseconds(200);
/// A file that an editor has taken away comes back within so many periods.
constexpr int kMostAbsences = 10;

Colours ChooseColours() {
    const char* const refused = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    const bool plain = (refused && *refused) || !terminal || std::string_view(terminal) == "dumb";
    return isatty(STDOUT_FILENO) == 1 && !plain ? Colours::On : Colours::Off;
}

std::string Counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string Summary(const std::vector<FileReport>& reports) {
    std::size_t errors = 0;
    std::size_t warnings = 0;
    for (const FileReport& report : reports) {
        errors += report.Count(Severity::Error);
        warnings += report.Count(Severity::Warning);
    }
    const std::string files = Counted(reports.size(), "file");
    if (errors + warnings == 0) return files + " checked, nothing wrong.";
    return files + " checked: " + Counted(errors, "error") + ", " + Counted(warnings, "warning") + ".";
}

void Print(const CheckPass& pass, const std::vector<FileReport>& reports, const CheckOptions& options) {
    for (const std::string& change : pass.Changes())
        std::fprintf(options.json ? stderr : stdout, "fixed: %s\n", Printable(change).c_str());
    std::string text;
    if (options.json) {
        nlohmann::json array = nlohmann::json::array();
        for (const FileReport& report : reports) AppendJson(array, report);
        // With --watch each check is one line.
        text = array.dump(options.watch ? -1 : 2) + "\n";
    } else {
        const Colours colours = ChooseColours();
        for (const FileReport& report : reports) text += ReportText(report, colours);
        text += Summary(reports) + "\n";
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

int StatusOf(const std::vector<FileReport>& reports) {
    for (const FileReport& report : reports) {
        if (report.Count(Severity::Error) > 0) return kFailed;
    }
    return kDone;
}

/// Waits for a time, or until a signal ends the wait.
class Interruption {
  public:
    /// False when the wait was interrupted.
    bool Wait(std::chrono::milliseconds time) {
        std::unique_lock lock(mutex_);
        return !changed_.wait_for(lock, time, [this] { return interrupted_; });
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool interrupted_ = false;
    // Last: its thread uses the others.
    const Signals signals_{[this] {
                               const std::lock_guard lock(mutex_);
                               interrupted_ = true;
                               changed_.notify_all();
                           },
                           [] {}};
};

/// Returns when the files have changed and been left alone for a period; false when interrupted. An editor
/// writes a file in steps, or takes it away and puts another in its place.
bool AwaitChange(const CheckPass& pass, const std::string& checked, Interruption& interruption) {
    std::string last = checked;
    for (int absences = 0;;) {
        if (!interruption.Wait(kPeriod)) return false;
        const std::string now = pass.Stamp();
        const bool absent = now.find("-\n") != std::string::npos;
        if (now != checked && now == last && (!absent || ++absences > kMostAbsences)) return true;
        last = now;
    }
}

int Watch(const CheckOptions& options) {
    Interruption interruption;
    CheckPass pass(options);
    for (;;) {
        const std::string stamp = pass.Stamp();
        try {
            const auto reports = pass.Run();
            Print(pass, reports, options);
        } catch (const StudioError& error) {
            std::fprintf(stderr, "sorakaze-studio: %s\n", Printable(error.what()).c_str());
        }
        // What --fix has written is no change to check.
        if (!AwaitChange(pass, options.fix ? pass.Stamp() : stamp, interruption)) return kDone;
        if (options.json) continue;
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        char text[40];
        std::strftime(text, sizeof text, "\n%H:%M:%S, checked again:\n", localtime_r(&now, &local));
        std::fputs(text, stdout);
    }
}

}  // namespace

int Check(const CheckOptions& options) {
    if (options.watch) return Watch(options);
    CheckPass pass(options);
    const auto reports = pass.Run();
    Print(pass, reports, options);
    return StatusOf(reports);
}

}  // namespace sorakaze::studio
