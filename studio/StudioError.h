// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <stdexcept>
#include <string>

namespace sorakaze::studio {

/// Exit statuses of the program.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongCall = 2;
inline constexpr int kTracksFailed = 4;  ///< the show ran, but more than half of its tracks did not play

/// Ends the program with one line that says what went wrong and what to do.
class StudioError : public std::runtime_error {
  public:
    StudioError(int status, const std::string& line) : std::runtime_error(line), status_(status) {}
    int Status() const { return status_; }

  private:
    int status_;
};

}  // namespace sorakaze::studio
