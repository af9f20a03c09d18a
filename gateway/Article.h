// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// An article's beginning: what it calls its subject, what an announcer can say of it, and what its
// information box says that it is. Pages are foreign bytes; nothing in one makes reading it fail.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "gateway/Edition.h"
#include "gateway/MusicianSigns.h"

namespace sorakaze::gateway {

struct Article {
    /// What follows the subject's name: " was an American guitarist. He ..." Empty if the page has no lead.
    std::string told;
    /// What the page itself calls its subject.
    std::vector<std::string> names;
    /// The page only tells apart what bears its title.
    bool disambiguates = false;
    BoxSays box = BoxSays::Nothing;
};

/// `html` is the markup of the article, or of its part before the first heading; `title` is its title.
Article ReadArticle(std::string_view html, std::string_view title, Edition edition);

}  // namespace sorakaze::gateway
