// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Remarks on an edition that shops and rippers add to a name, and that no presenter says: "- Remastered
// 2011",
// "[Explicit]", "[Deluxe Edition]". Remarks on the music stay: "- Live at Leeds", "[feat. Dido]", "- Dub
// Mix".
#pragma once

#include <string>

namespace sorakaze::player {

enum class NameKind { Title, Album };

/// The name without remarks in square brackets and after dashes. Never empty for a name that isn't: a name
/// that is nothing but a remark stays as it is. Clean text; a pure function.
std::string WithoutEditionRemarks(const std::string& name, NameKind kind);

}  // namespace sorakaze::player
