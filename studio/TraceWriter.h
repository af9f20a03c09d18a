// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <fstream>

#include "show/ShowObserver.h"

namespace sorakaze::studio {

/// Writes a show as JSON Lines: one object an event, `ticks` and `what` first, then the event's fields; a
/// field that is itself called `what` becomes the member `which`. Bytes that aren't UTF-8 become replacement
/// characters.
class TraceWriter : public ShowObserver {
  public:
    /// Throws StudioError where the file can't be made.
    explicit TraceWriter(const std::filesystem::path& file);
    void OnShowEvent(const ShowEvent& event) override;
    /// Throws StudioError if something could not be written.
    void Finish();

  private:
    std::filesystem::path file_;
    std::ofstream out_;
};

}  // namespace sorakaze::studio
