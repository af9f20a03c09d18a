// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Stands behind a window's viewer where there is no browser: a loaded page that holds a form has it sent, and
// the sound that the answer plays is played beside the show. Nothing but that is done with a page, and no
// script of one is run.
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
    /// `complain` is given a line for people when a page stays silent though it shouldn't.
    PageSpeaker(HTMLViewer& viewer, std::function<void(const std::string&)> complain);
    ~PageSpeaker();
    PageSpeaker(const PageSpeaker&) = delete;
    PageSpeaker& operator=(const PageSpeaker&) = delete;

    /// Whether a page is heard.
    bool IsSpeaking() const;

  private:
    void Load(const FolderItemRef& file);
    void Speak(const PageForm& form, Blocking kind);
    void End();

    HTMLViewer& viewer_;
    const std::function<void(const std::string&)> complain_;
    Thread distant_;            ///< waits for a service that isn't on this machine
    std::uint64_t loaded_ = 0;  ///< pages; a page speaks for as long as it is the last
    std::string late_;          ///< the service that didn't answer in time: it isn't asked again
    std::shared_ptr<sound::Voice> voice_;
    std::filesystem::path file_;  ///< that the voice is read from
};

}  // namespace sorakaze::studio
