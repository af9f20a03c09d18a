// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <memory>
#include <stop_token>
#include <string>

#include "app/runtime/CommandCache.h"
#include "app/runtime/Thread.h"
#include "host/StationHost.h"
#include "studio/Console.h"
#include "studio/ConsoleHost.h"
#include "studio/FailureLines.h"
#include "studio/PageSpeaker.h"
#include "studio/Recorder.h"
#include "studio/Render.h"
#include "studio/ShowProgress.h"
#include "studio/ShowSummary.h"
#include "studio/TraceWriter.h"
#include "studio/Transcript.h"

namespace sorakaze::studio {

/// One show, from the press of the button to the complete file. Main thread, but for Interrupt.
class RenderSession {
  public:
    /// `options` outlives the session. Throws StudioError. From when a stop is requested of `interrupted`,
    /// nothing waits for a decoder or for the search for music.
    RenderSession(const RenderOptions& options, std::stop_token interrupted);
    ~RenderSession();

    std::filesystem::path FolderOfTheRun() { return station_.GetRuntime().FolderOfTheRun(); }
    /// Stops the show as its button would. Any thread.
    void Interrupt();
    /// Returns when the show is over and the file is complete. Throws StudioError.
    void Run();

  private:
    void StartServices();
    void ChooseShow();
    void Begin();
    bool IsOver();
    void Stop();
    void ObserveShow();
    /// Of a page that stays silent.
    void TellSilentPage(const std::string& why);
    /// Prints what became of the show, and completes its trace.
    void ReportShow();
    /// After the show: the rest of a sentence of a page, and the ramps of the last sounds.
    void MixRest(bool pageMayFinish);

    const RenderOptions& options_;
    const std::filesystem::path folder_;
    Console console_;
    ConsoleHost host_;
    CommandCache speech_{CommandCache::Scope::Speech};
    Recorder recorder_;
    StationHost station_;
    mainWindow& window_;
    PageSpeaker speaker_;
    Transcript transcript_;
    std::unique_ptr<TraceWriter> trace_;
    ShowProgress progress_;
    ShowSummary summary_;
    FailureLines failureLines_;
    Thread limit_;  ///< stops the show when its time is over
    bool begun_ = false;
    bool stopped_ = false;
    std::string fault_;
};

}  // namespace sorakaze::studio
