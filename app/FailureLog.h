// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// On the desktop nobody looks on, so what failed is a line on standard error, for the log of the session.
#pragma once

#include "show/ShowObserver.h"

namespace sorakaze {

class FailureLog : public ShowObserver {
  public:
    void OnShowEvent(const ShowEvent& event) override;
};

}  // namespace sorakaze
