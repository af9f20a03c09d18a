// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The desktop has no transcript, so failures are lines on standard error, for the log of the session.
#pragma once

#include "show/ShowObserver.h"

namespace sorakaze {

class FailureLog : public ShowObserver {
  public:
    void OnShowEvent(const ShowEvent& event) override;
};

}  // namespace sorakaze
