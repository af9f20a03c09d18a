// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "show/ShowObserver.h"

namespace sorakaze {

/// The event as a JSON object on one line, without its end: `ticks`, `what` and the fields. `at` is a time of
/// day that comes first; empty for none. Bytes that are no UTF-8 are replaced.
std::string EventLine(const ShowEvent& event, std::string_view at = {});
/// The same of something that isn't an event of a show.
std::string NoteLine(std::string_view at, std::string_view what, const ShowEvent::Fields& fields);

}  // namespace sorakaze
