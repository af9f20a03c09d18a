// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Reads an article: the names of its subject, what an announcer can say about it, and whether its information
// box describes a musician. A pure function of foreign bytes, which never fails; any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "gateway/encyclopaedia/Edition.h"
#include "gateway/encyclopaedia/SubjectKind.h"

namespace sorakaze::gateway {

struct Article {
    /// What follows the subject's name: " was an American guitarist. He ..." Empty if the page has no lead.
    std::string summary;
    /// Names that the page itself gives to its subject.
    std::vector<std::string> names;
    /// The page only lists the articles that its title may mean.
    bool isDisambiguation = false;
    SubjectKind subject = SubjectKind::Unknown;  ///< by the information box
};

/// `html` is the markup of the article, or of its part before the first heading; `title` is its title.
Article ReadArticle(std::string_view html, std::string_view title, Edition edition);

}  // namespace sorakaze::gateway
