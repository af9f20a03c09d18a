// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FailureLog.h"

#include <cstdio>

#include "base/PrintableText.h"
#include "host/FailureText.h"

namespace sorakaze {

void FailureLog::OnShowEvent(const ShowEvent& event) {
    if (IsFailure(event))
        std::fprintf(stderr, "Sorakaze: %s\n", Printable(FailureText(event, station_)).c_str());
}

}  // namespace sorakaze
