// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "gateway/encyclopaedia/Namesakes.h"
#include "gateway/encyclopaedia/SearchTarget.h"
#include "gateway/encyclopaedia/ShortNames.h"
#include "gateway/encyclopaedia/SiteApi.h"

/// What a site answers, and what a client asks for.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze::gateway;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const auto candidates = ReadCandidates(input);
    for (const Candidate& candidate : candidates) {
        if (candidate.title.empty()) std::abort();
        for (const Edition edition : {Edition::English, Edition::Japanese}) {
            IsMusician(candidate, edition);
            if (TitlesOfBearers(ReadNamesakes(input), candidate.title, edition).size() > 50) std::abort();
        }
        for (const std::string& spelling : Spellings(candidate.title)) {
            IsShortFor(candidate.redirectedFrom, spelling, Bearer::Group);
            IsShortFor(spelling, candidate.redirectedFrom, Bearer::Person);
        }
    }
    if (const Candidate* best = BestKnown(candidates); best && best->title.empty()) std::abort();
    for (const std::string& title : ReadNamesakes(input)) {
        if (title.empty()) std::abort();
    }
    ReadLeadSection(input);
    ReadError(input);
    if (const auto search = ParseSearch(input); search && search->name.empty()) std::abort();
    if (const auto address = ParseArticleAddress(input)) {
        const auto again = ParseArticleAddress(ArticleTarget(*address));
        if (!again || again->title != address->title) std::abort();
    }
    return 0;
}
