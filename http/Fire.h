// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

namespace sorakaze::http {

/// Calls the handler if one is installed. It may replace itself meanwhile.
template <typename... Parameters, typename... Arguments>
void Fire(const std::function<void(Parameters...)>& handler, const Arguments&... arguments) {
    if (const auto call = handler) call(arguments...);
}

}  // namespace sorakaze::http
