// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>

#include "show/ShowObserver.h"
#include "studio/Console.h"

namespace sorakaze::studio {

/// Prints a show for people, as it happens: who says what, which sound and which track play, with the time in
/// the show.
class Transcript : public ShowObserver {
  public:
    /// Paths within the station are printed relative to it.
    Transcript(Console& console, std::filesystem::path station)
        : console_(console), station_(std::move(station)) {}
    void OnShowEvent(const ShowEvent& event) override;

  private:
    std::string Describe(const ShowEvent& event) const;

    Console& console_;
    std::filesystem::path station_;
};

}  // namespace sorakaze::studio
