// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <chrono>
#include <cstdint>

#include "app/runtime/Runtime.h"
#include "app/runtime/Shell.h"
#include "base/Utf8.h"
#include "show/mainWindow.h"
#include "speech/Romanisation.h"

namespace sorakaze {
namespace {

/// Each run of multibyte characters starts a program. Runs beyond these limits are left out. The limit on
/// runs is more than any title has, and is reached first on a machine of ordinary speed: a rendered show must
/// not depend on the time.
constexpr int kMostRuns = 150;
constexpr std::chrono::seconds kLongest{7};
/// Enough to tell Chinese from Japanese; an environment isn't long.
constexpr std::int32_t kLongestRecord = 1000;

}  // namespace

String mainWindow::convertRoma(const String& text) {
    const std::string& bytes = text.Bytes();
    std::string result;
    std::string run;
    int runs = 0;
    const auto begin = std::chrono::steady_clock::now();
    const auto endRun = [&] {
        const bool isAffordable = runs < kMostRuns && std::chrono::steady_clock::now() - begin < kLongest;
        if (!run.empty() && isAffordable) {
            result += kanji2roma(run).Bytes();
            ++runs;
        }
        run.clear();
    };
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t size = utf8::Read(bytes, at).size;
        if (size == 1) endRun();
        (size == 1 ? result : run).append(bytes, at, size);
        at += size;
        Yield();
    }
    endRun();
    return result;
}

/// The run holds nothing that would need escaping. Kept behaviour 53.
String mainWindow::kanji2roma(const String& run) {
    Shell shell;
    shell.SetVariable("SORAKAZE_VOICE", voiceOfShow());
    shell.SetVariable("SORAKAZE_RECORD", Left(preparedRecord, kLongestRecord));
    shell.Execute(NotNil(kanji2kanaCmd)->ShellPath() + " -o " + Chr(34) + run + Chr(34));
    if (!shell.Complaint().IsEmpty())
        tell(ShowEvent::Kind::Failed, {{"what", "reading"}, {"path", ""}, {"why", shell.Complaint()}});
    String reading = ReplaceAll(shell.Result(), Chr(10), "");
    reading = ReplaceAll(reading, ",,", " ");
    reading = ReplaceAll(reading, ",", " ");
    return Romanise(reading, kanaArray, romeArray, [] { Yield(); });
}

}  // namespace sorakaze
