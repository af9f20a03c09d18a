// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/Shell.h"

#include <chrono>
#include <limits>
#include <sstream>
#include <stop_token>
#include <utility>

#include "app/runtime/Runtime.h"
#include "base/PrintableText.h"
#include "process/ConfinedProcess.h"

namespace sorakaze {
namespace {

const char* NameOf(process::ExceededLimit limit) {
    switch (limit) {
        case process::ExceededLimit::WallTime:
            return "it took longer than 20 seconds";
        case process::ExceededLimit::ProcessorTime:
            return "it computed for too long";
        case process::ExceededLimit::FileSize:
        case process::ExceededLimit::FolderSize:
            return "it wrote too much";
        case process::ExceededLimit::Processes:
            return "it started too many processes";
        case process::ExceededLimit::Memory:
            return "it used too much memory";
    }
    return "";
}

/// The last line that the shell or a program of the application's own has written, else the last that isn't
/// blank: what a text started in the shell may say anything. Cut where it is long, and without `folder`,
/// whose name is another one in each run.
std::string ComplaintIn(std::string text, const std::string& folder) {
    for (auto at = text.find(folder); at != std::string::npos; at = text.find(folder, at))
        text.erase(at, folder.size());
    std::istringstream lines(text);
    std::string last, lastOwn;
    for (std::string line; std::getline(lines, line);) {
        if (line.find_first_not_of(" \t\r") != std::string::npos) last = line;
        for (const char* name : {"sh: ", "say: ", "SayKotoeri: "})
            if (line.starts_with(name)) lastOwn = line;
    }
    constexpr std::size_t kMost = 200;
    return Printable((lastOwn.empty() ? last : lastOwn).substr(0, kMost));
}

}  // namespace

void Shell::SetVariable(const String& name, const String& value) {
    variables_.push_back(name.Bytes() + '=' + value.Bytes());
}

/// What the outcome of a command depends on.
std::string Shell::KeyOf(const String& command) const {
    std::string key;
    for (const std::string& variable : variables_) key += variable + '\n';
    return key + command.Bytes();
}

void Shell::Execute(const String& command, const FolderItemRef& output) {
    auto& runtime = Runtime::Current();
    CommandCache* const cache = runtime.GetCommandCache();
    const auto path = output ? output->Path() : std::filesystem::path();
    if (auto known = cache ? cache->Repeat(KeyOf(command), path) : std::nullopt) {
        // The other threads have their turn, as they would.
        runtime.Threads().Block(Blocking::ClockStopped, [](const std::stop_token& /*cancelled*/) {});
        result_ = std::move(known->result);
        complaint_ = std::move(known->complaint);
        errorCode_ = known->errorCode;
        return;
    }
    Run(command, output);
    if (cache) cache->Keep(KeyOf(command), {result_, complaint_, errorCode_}, path);
}

void Shell::Run(const String& command, const FolderItemRef& output) {
    auto& runtime = Runtime::Current();
    result_ = complaint_ = String();
    errorCode_ = 127;  // as a shell has it for what could not be started
    if (runtime.TemporaryFolder().empty()) {
        complaint_ = "there is no temporary folder";
        return;
    }
    process::Confinement confinement;
    confinement.folder = runtime.TemporaryFolder();
    if (output) confinement.output = output->Path();
    process::OfferPrograms(confinement, runtime.ResourcesFolder());
    confinement.variables.insert(confinement.variables.end(), variables_.begin(), variables_.end());
    // The longest sentence takes seconds; a title that makes the shell wait must not hold up a show for long.
    confinement.wallTime = std::chrono::seconds(20);
#ifdef __SANITIZE_ADDRESS__
    // A program of ours that is built with the sanitizer reserves terabytes of addresses.
    confinement.addressSpace = std::numeric_limits<std::uint64_t>::max();
#endif
    process::ConfinedProcess process(command.Bytes(), std::move(confinement));
    process::CommandResult result;
    runtime.Threads().Block(Blocking::ClockStopped, [&](std::stop_token cancelled) {
        const std::stop_callback kill(cancelled, [&process] { process.Kill(); });
        result = process.Run();
    });
    result_ = std::move(result.output);
    errorCode_ = result.status;
    if (result.exceeded)
        complaint_ = String("the command was ended: ") + NameOf(*result.exceeded);
    else
        complaint_ = ComplaintIn(std::move(result.errors), runtime.TemporaryFolder().string() + "/");
    if (complaint_.IsEmpty() && errorCode_ != 0)
        complaint_ = String("the command ended with status ") + Str(errorCode_);
}

}  // namespace sorakaze
