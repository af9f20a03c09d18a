// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The desktop has no transcript, so failures and messages are lines on standard error, for the log of the
// session.
#pragma once

#include <filesystem>
#include <utility>

#include "show/ShowObserver.h"

namespace sorakaze {

class FailureLog : public ShowObserver {
  public:
    /// Paths within the station are printed relative to it.
    explicit FailureLog(std::filesystem::path station) : station_(std::move(station)) {}
    void OnShowEvent(const ShowEvent& event) override;

  private:
    const std::filesystem::path station_;
};

}  // namespace sorakaze
