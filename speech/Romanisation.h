// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "app/runtime/String.h"
#include "base/FunctionRef.h"

namespace sorakaze {

/// A reading in kana, spelt in Latin letters by the table whose rows are `kana[i]` and `romaji[i]`. The small
/// tsu, the table's last row, is spelt according to what follows it; at the very end it is dropped.
/// Characters without a row are kept. Calls `afterEach` after each row or character.
String Romanise(const String& reading, const std::vector<String>& kana, const std::vector<String>& romaji,
                FunctionRef<void()> afterEach);

}  // namespace sorakaze
