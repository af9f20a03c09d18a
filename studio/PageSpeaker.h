// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Speaks the pages that a show loads into its viewer, without a browser: the page's form is sent, and the
// sound of the answer is played beside the show. Nothing else of a page is used, and no script is run.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "app/runtime/Controls.h"
#include "app/runtime/Scheduler.h"
#include "app/runtime/Thread.h"
#include "sound/MixingEngine.h"
#include "studio/VoicePages.h"

namespace sorakaze::studio {

/// For the baton's holder. Outlived by the viewer and by the runtime.
class PageSpeaker {
  public:
    /// `complain` is told why, for people, when a page stays silent though it shouldn't.
    PageSpeaker(HTMLViewer& viewer, std::function<void(const std::string&)> complain);
    ~PageSpeaker();
    PageSpeaker(const PageSpeaker&) = delete;
    PageSpeaker& operator=(const PageSpeaker&) = delete;

    /// Whether a page is heard.
    bool IsSpeaking() const;

  private:
    void Load(const FolderItemRef& file);
    void Speak(const PageForm& form, Blocking kind);
    void StopSpeaking();

    HTMLViewer& viewer_;
    const std::function<void(const std::string&)> complain_;
    Thread remote_;                ///< waits for a service that isn't on this machine
    std::uint64_t pageCount_ = 0;  ///< pages; a page speaks for as long as it is the last
    std::string timedOutService_;  ///< the service that didn't answer in time: it isn't asked again
    std::shared_ptr<sound::Voice> voice_;
    std::filesystem::path file_;  ///< that the voice is read from
};

}  // namespace sorakaze::studio
