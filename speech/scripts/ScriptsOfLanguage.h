// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

namespace sorakaze::scripts {

/// Whether a voice of that language reads that script, which isn't Latin: "ru" and "Cyrl". Languages are
/// given with or without a region ("zh-hant"), scripts by their four letters.
bool LanguageReads(std::string_view language, std::string_view script);

}  // namespace sorakaze::scripts
