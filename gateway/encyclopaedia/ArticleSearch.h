// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// One search for the article about a musician: its queries to the site, and the decisions on the answers. An
// uncertain find is none.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "gateway/encyclopaedia/Article.h"
#include "gateway/encyclopaedia/SearchTarget.h"
#include "gateway/encyclopaedia/SiteApi.h"
#include "gateway/encyclopaedia/SiteClient.h"

namespace sorakaze::gateway {

struct FoundArticle {
    std::string title;
    std::string name;     ///< of the subject
    std::string summary;  ///< what follows the name
};

/// One thread at a time.
class ArticleSearch {
  public:
    /// What is referred to outlives the search.
    ArticleSearch(SiteClient& client, const std::string& site, const Search& search);

    /// Blocks while the site is asked. Once.
    std::optional<FoundArticle> Run();

    /// False if a query had no answer.
    bool WasAnswered() const { return wasAnswered_; }
    /// Of the first of these.
    const std::string& Failure() const { return failure_; }

  private:
    std::optional<std::string> Ask(const std::string& query, std::size_t mostBytes);
    std::vector<Candidate> Candidates(const std::string& query);
    std::optional<Candidate> FindNearest();
    bool HasSearchedName(std::string_view title) const;
    bool IsSubjectsName(const Candidate& candidate, const Article& article) const;
    std::optional<FoundArticle> ReadIfMusician(const Candidate& candidate);
    std::optional<FoundArticle> FindNamesake(const Candidate& nearest);

    SiteClient::Session session_;
    const std::string& site_;
    const Edition edition_;
    std::string name_;  ///< as it is asked for: one of its spellings
    bool wasAnswered_ = true;
    std::string failure_;
};

}  // namespace sorakaze::gateway
