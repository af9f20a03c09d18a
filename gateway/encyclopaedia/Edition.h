// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace sorakaze::gateway {

/// Of the encyclopaedia: its language and site.
enum class Edition { English, Japanese };

}  // namespace sorakaze::gateway
