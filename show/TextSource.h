// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/runtime/String.h"

namespace sorakaze {

/// Whom a text that is spoken must be credited to. Empty where that isn't known.
struct TextSource {
    String title;  ///< of the article
    String address;
    String licence;
};

}  // namespace sorakaze
