// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Answers queries as the encyclopaedia's site does, with the articles of a folder under pages/. A page's file
// begins with lines "name: value" and an empty line:
//
//   title:           of the article
//   categories:      separated by "; "
//   disambiguation:  "yes" if the page is one
//   search: NAME     the site's near match leads from this name to the page
//   redirect: NAME | FROM          ... by a redirect from FROM
//   silent: NAME | FROM            ... and nothing may be said
//   silent section: NAME | FROM    ... and the redirect leads into the page's middle
//   name: NAME       for this name, which leads to another page, `say` must be said
//   say:             must be said for every name except the silent ones; without it nothing may be said
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/gateway/encyclopaedia/TlsSite.h"

namespace sorakaze::test {

class ArticleSite {
  public:
    explicit ArticleSite(const std::filesystem::path& folder) {
        for (const auto& file : std::filesystem::directory_iterator(folder)) Read(file.path());
    }

    /// By name: what must be said.
    const std::map<std::string, std::string>& Expected() const { return expected_; }

    TlsSite::Answer Ask(const std::string& target) const {
        nlohmann::json query;
        if (const auto page = pages_.find(Field(target, "page")); page != pages_.end()) {
            return {200,
                    nlohmann::json{{"parse", {{"title", page->first}, {"text", page->second.html}}}}.dump()};
        }
        if (const auto near = near_.find(Field(target, "gsrsearch")); near != near_.end()) {
            const auto& [title, redirect] = near->second;
            query["pages"].push_back(pages_.at(title).json);
            if (!redirect.is_null()) query["redirects"].push_back(redirect);
        }
        if (const std::string prefix = Field(target, "apprefix"); !prefix.empty()) {
            for (const auto& [title, page] : pages_)
                if (title.starts_with(prefix)) query["allpages"].push_back({{"ns", 0}, {"title", title}});
            return {200, nlohmann::json{{"batchcomplete", true}, {"query", query}}.dump()};
        }
        std::stringstream titles(Field(target, "titles"));
        for (std::string title; std::getline(titles, title, '|');) {
            const auto page = pages_.find(title);
            query["pages"].push_back(page != pages_.end()
                                         ? page->second.json
                                         : nlohmann::json{{"ns", 0}, {"title", title}, {"missing", true}});
        }
        return {200, nlohmann::json{{"batchcomplete", true}, {"query", query}}.dump()};
    }

    /// A parameter of a query, decoded; empty without it.
    static std::string Field(const std::string& target, const std::string& name) {
        const auto begin = target.find("&" + name + "=");
        if (begin == target.npos) return {};
        const auto value = begin + name.size() + 2;
        std::string field = target.substr(value, target.find('&', value) - value);
        field.resize(MHD_http_unescape(field.data()));
        return field;
    }

  private:
    struct Page {
        std::string html;
        nlohmann::json json;
    };

    void Read(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        std::string title, say;
        std::vector<std::string> spoken;
        nlohmann::json page{{"ns", 0}};
        for (std::string line; std::getline(file, line) && !line.empty();) {
            const std::string name = line.substr(0, line.find(": "));
            const std::string value = line.substr(name.size() + 2);
            if (name == "title") {
                page["title"] = title = value;
            } else if (name == "say") {
                say = value;
            } else if (name == "disambiguation") {
                page["pageprops"]["disambiguation"] = "";
            } else if (name == "categories") {
                std::stringstream list(value);
                for (std::string item; std::getline(list >> std::ws, item, ';');)
                    page["categories"].push_back({{"ns", 14}, {"title", "Category:" + item}});
            } else {
                const std::string asked = value.substr(0, value.find(" | "));
                if (name.starts_with("silent"))
                    expected_[asked] = "";
                else
                    spoken.push_back(asked);
                if (name == "name") continue;
                auto& redirect = (near_[asked] = {title, {}}).second;
                if (value == asked) continue;
                redirect = {{"index", 1}, {"from", value.substr(asked.size() + 3)}, {"to", title}};
                if (name == "silent section") redirect["tofragment"] = "Boutique";
            }
        }
        for (const std::string& asked : spoken)
            if (!say.empty() || !expected_.contains(asked)) expected_[asked] = say;
        pages_[title] = {std::string(std::istreambuf_iterator(file), {}), page};
    }

    std::map<std::string, Page> pages_;
    std::map<std::string, std::pair<std::string, nlohmann::json>> near_;  ///< title and redirect, by name
    std::map<std::string, std::string> expected_;
};

}  // namespace sorakaze::test
