// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What an announcer uses of an encyclopaedia's article. Pure: neither the network nor the window.
#pragma once

#include <optional>

#include "app/runtime/String.h"

namespace sorakaze {

enum class ShowLanguage { English, Japanese };

struct ArtistArticle {
    /// The artist's name as the article spells it; for English shows, and only if it has no markup. Empty for
    /// an article without a paragraph.
    std::optional<String> name;
    /// The first paragraph that begins in bold, with its markup; empty if there is none.
    String paragraph;
};

/// Empty if the page isn't a musician's, which for a Japanese show any page is.
std::optional<ArtistArticle> ReadArticle(const String& page, ShowLanguage language);

/// The paragraph as it is spoken; empty for one that is too long for a Japanese show. Raises RegExException.
String SpokenText(const String& paragraph, ShowLanguage language);

}  // namespace sorakaze
