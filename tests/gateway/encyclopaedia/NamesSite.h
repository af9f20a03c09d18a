// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A site whose articles are listed in names.tsv, which explains its lines. The pages are made in the markup
// of one of the two parsers that such sites have.
#pragma once

#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "base/Utf8.h"
#include "base/unicode/Characters.h"
#include "base/unicode/Normalization.h"
#include "gateway/encyclopaedia/Names.h"
#include "tests/gateway/encyclopaedia/ArticleSite.h"

namespace sorakaze::test {

enum class Parser { Legacy, Parsoid };

class NamesSite {
  public:
    NamesSite(const std::filesystem::path& table, const std::string& edition, Parser parser)
        : isJapanese_(edition == "ja"), parser_(parser) {
        std::ifstream file(table);
        for (std::string line; std::getline(file, line);) {
            auto fields = Split(line, '\t');
            fields.resize(5);
            if (fields[0] == "kind") kinds_[fields[1]] = {fields[2], fields[3], fields[4]};
            if (fields[0] == edition) AddArticle(fields);
            if (fields[0] == edition + "?") asked[fields[1]] = fields[2];
        }
    }

    /// By name: the title of the right article, or nothing.
    std::map<std::string, std::string> asked;

    TlsSite::Answer Ask(const std::string& target) const {
        nlohmann::json query = nlohmann::json::object();
        if (const auto page = articles_.find(ArticleSite::Field(target, "page")); page != articles_.end()) {
            const nlohmann::json parse{{"title", page->first}, {"text", Html(page->first, page->second)}};
            return {200, nlohmann::json{{"parse", parse}}.dump()};
        }
        const std::string near = Key(ArticleSite::Field(target, "gsrsearch"));
        if (const auto found = keys_.find(near); !near.empty() && found != keys_.end())
            AddPage(found->second, query);
        for (const std::string& title : Split(ArticleSite::Field(target, "titles"), '|'))
            AddPage(title, query);
        if (const std::string prefix = ArticleSite::Field(target, "apprefix"); !prefix.empty()) {
            for (const auto& titles : {Titles(articles_), Titles(redirects_)})
                for (const std::string& title : titles)
                    if (title.starts_with(prefix)) query["allpages"].push_back({{"ns", 0}, {"title", title}});
        }
        return {200, nlohmann::json{{"batchcomplete", true}, {"query", query}}.dump()};
    }

  private:
    struct Kind {
        std::string categories, rows, says;
    };
    struct Article {
        Kind kind;
        std::map<std::string, std::string> names;
        bool isDisambiguation = false;
    };

    static std::vector<std::string> Split(const std::string& text, char separator) {
        std::vector<std::string> parts;
        std::stringstream list(text);
        for (std::string part; std::getline(list, part, separator);) parts.push_back(part);
        return parts;
    }
    template <typename Map>
    static std::vector<std::string> Titles(const Map& map) {
        std::vector<std::string> titles;
        for (const auto& [title, other] : map) titles.push_back(title);
        return titles;
    }
    /// The site's search field ignores letter case and accents.
    static std::string Key(const std::string& title) {
        std::string key;
        const std::string text = unicode::FoldedCase(unicode::Normalized(title, unicode::NormalForm::Nfkd));
        for (std::size_t at = 0; at < text.size();) {
            const auto [code, size] = utf8::Read(text, at);
            if (code < 0x300 || code >= 0x370) key += text.substr(at, size);
            at += size;
        }
        return key;
    }

    void AddArticle(const std::vector<std::string>& fields) {
        const std::string& title = fields[1];
        Article& article = articles_[title];
        const auto kind = Split(fields[2], ':');
        article.isDisambiguation = kind[0] == "dab";
        article.kind = kind[0] == "concept" ? Kind{kind[1], "", kind[2]} : kinds_[kind[0]];
        for (const std::string& name : Split(fields[4], ';'))
            article.names[name.substr(0, name.find('='))] = name.substr(name.find('=') + 1);
        keys_.emplace(Key(title), title);
        for (const std::string& redirect : Split(fields[3], '|')) {
            const std::string from = redirect.substr(0, redirect.find('#'));
            redirects_[from] = {title, from == redirect ? "" : redirect.substr(from.size() + 1)};
            keys_.emplace(Key(from), from);
        }
    }

    void AddPage(const std::string& from, nlohmann::json& query) const {
        std::string title = from;
        if (const auto redirect = redirects_.find(from); redirect != redirects_.end()) {
            title = redirect->second.first;
            query["redirects"].push_back({{"from", from}, {"to", title}});
            if (!redirect->second.second.empty())
                query["redirects"].back()["tofragment"] = redirect->second.second;
        }
        const auto found = articles_.find(title);
        nlohmann::json page{{"ns", 0}, {"title", title}};
        if (found == articles_.end()) {
            page["missing"] = true;
        } else {
            const Article& article = found->second;
            for (const std::string& category : Split(article.kind.categories, ';'))
                page["categories"].push_back({{"ns", 14}, {"title", "Category:" + category}});
            const auto kilobytes = article.names.find("kb");
            page["length"] = 1000 * (kilobytes == article.names.end() ? 60 : std::stoi(kilobytes->second));
            if (article.isDisambiguation) {
                page["pageprops"]["disambiguation"] = "";
                for (const auto& [other, ignored] : articles_)
                    if (gateway::SameName(gateway::WithoutQualifier(other), title) && other != title)
                        page["links"].push_back({{"ns", 0}, {"title", other}});
            }
        }
        query["pages"].push_back(page);
    }

    std::string Lead(const std::string& title, const Article& article) const {
        const auto name = [&](const char* which) {
            const auto found = article.names.find(which);
            return found == article.names.end() ? std::string() : found->second;
        };
        const bool isParsoid = parser_ == Parser::Parsoid;
        const std::string subject =
            name("bold").empty() ? std::string(gateway::WithoutQualifier(title)) : name("bold");
        const std::string mark =
            isParsoid
                ? R"(<sup about="#mwt9" class="mw-ref reference" typeof="mw:Extension/ref"><a href="#n1">)"
                  R"(<span class="mw-reflink-text">[1]</span></a></sup>)"
                : R"(<sup id="cite_ref-1" class="reference"><a href="#n1">&#91;1&#93;</a></sup>)";
        std::string lead = "<b" + std::string(isParsoid ? " id=\"mwBw\">" : ">") + subject + "</b>";
        if (!isJapanese_ && article.kind.says.find(" of ") != std::string::npos &&
            !article.kind.says.starts_with("is")) {
            return "A " + lead + " is a " + article.kind.says + "." + mark + " It is old.";
        }
        if (isJapanese_ && !article.kind.says.starts_with("は")) lead += "は、";
        if (!name("later").empty())
            lead +=
                R"( (<span class="rt-commentedText nowrap"><span class="IPA">/ˈeksəmpəl/</span></span>) ()"
                R"(<span title="text"><i lang="la">)" +
                name("later") + "</i></span>)";
        if (!name("also").empty())
            lead += isJapanese_ ? "(<b>" + name("also") + "</b>)"
                                : " (born 1 May 1950), also known as <b>" + name("also") + "</b>,";
        lead += (isJapanese_ ? "" : " ") + article.kind.says + (isJapanese_ ? "。" : ".") + mark;
        return lead + (isJapanese_ ? "代表曲は多い。" : " Their work is well known.");
    }

    std::string Box(const std::string& title, const Article& article) const {
        if (article.kind.rows.empty()) return {};
        std::string rows = "<tr><th colspan=\"2\" class=\"infobox-above\">" + title + "</th></tr>";
        const auto add = [&](const std::string& label, const std::string& value) {
            rows += R"(<tr><th scope="row" class="infobox-label"><a href="./X" title="X">)" + label +
                    R"(</a></th><td class="infobox-data"><div class="hlist"><ul>)";
            for (const std::string& item : Split(value, ',')) rows += "<li>" + item + "</li>\n";
            rows += "</ul></div></td></tr>";
        };
        if (const auto native = article.names.find("native"); native != article.names.end())
            add("Native name", native->second);
        for (const std::string& row : Split(article.kind.rows, ';'))
            add(row.substr(0, row.find('=')), row.substr(row.find('=') + 1));
        return (parser_ == Parser::Parsoid
                    ? R"(<table class="infobox vcard plainlist" about="#mwt3" typeof="mw:Transclusion" data-mw='{}'>)"
                    : R"(<table class="infobox vcard plainlist">)") +
               ("<tbody>" + rows + "</tbody></table>");
    }

    std::string Html(const std::string& title, const Article& article) const {
        const std::string before =
            R"(<div class="shortdescription nomobile noexcerpt" style="display:none">Short</div>)"
            R"(<div role="note" class="hatnote navigation-not-searchable">For others, see <b>others</b>.</div>)";
        const std::string text =
            Box(title, article) + "<p class=\"mw-empty-elt\">\n</p><p>" + Lead(title, article) + "</p>";
        if (parser_ == Parser::Parsoid)
            return R"(<div class="mw-content-ltr mw-parser-output parsoid-body" lang="en" dir="ltr">)"
                   R"(<section data-mw-section-id="0" id="mwAQ">)" +
                   before + R"(<style data-mw-deduplicate="T" about="#mwt2">p{}</style>)" + text +
                   R"(<link rel="mw:PageProp/Category" href="./Category:X" id="mwCA"/></section></div>)";
        return R"(<div class="mw-content-ltr mw-parser-output" lang="en" dir="ltr">)" + before + text +
               R"(<meta property="mw:PageProp/toc" /></div>)";
    }

    const bool isJapanese_;
    const Parser parser_;
    std::map<std::string, Kind> kinds_;
    std::map<std::string, Article> articles_;
    std::map<std::string, std::pair<std::string, std::string>> redirects_;  ///< title and section, by title
    std::map<std::string, std::string> keys_;  ///< titles of articles and redirects, by Key
};

}  // namespace sorakaze::test
