// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

#include "host/FailureText.h"
#include "studio/Console.h"

namespace sorakaze::studio {

/// Prints each failure of a show as a line on standard error, unless the same terminal shows the transcript.
class FailureLines : public ShowObserver {
  public:
    /// Paths within the station are printed relative to it.
    FailureLines(Console& console, std::filesystem::path station)
        : console_(console), station_(std::move(station)) {}

    void SetTranscript(bool printed) { hasTranscript_ = printed; }
    void OnShowEvent(const ShowEvent& event) override {
        if (!IsFailure(event)) return;
        if (hasTranscript_ && console_.IsOneTerminal()) return;
        console_.Message(FailureText(event, station_));
    }

  private:
    Console& console_;
    const std::filesystem::path station_;
    bool hasTranscript_ = false;
};

}  // namespace sorakaze::studio
