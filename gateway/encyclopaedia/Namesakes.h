// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Decides which musician a name means that several subjects have. To announce the wrong one is worse than to
// say nothing. Pure functions; any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "gateway/encyclopaedia/Edition.h"
#include "gateway/encyclopaedia/SiteApi.h"

namespace sorakaze::gateway {

/// By its categories; where the site gave none, by what its title has in brackets.
bool IsMusician(const Candidate& candidate, Edition edition);

/// Those of the titles that may be of musicians who are called `name`: as many as a site takes at once.
std::vector<std::string> TitlesOfBearers(std::vector<std::string> titles, std::string_view name,
                                         Edition edition);

/// The one of the musicians that the site itself takes for the best known: the only one, or one whose title
/// says "band" without more, unless another is as likely. Null if there is none.
const Candidate* BestKnown(std::span<const Candidate> musicians);

}  // namespace sorakaze::gateway
