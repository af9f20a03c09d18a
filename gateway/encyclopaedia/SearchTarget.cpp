// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/SearchTarget.h"

#include <algorithm>
#include <cstddef>

#include "base/PercentCoding.h"
#include "base/Utf8.h"

namespace sorakaze::gateway {
namespace {

constexpr std::size_t kLongestTitle = 255;

bool IsTitle(std::string_view text) {
    return !text.empty() && text.size() <= kLongestTitle && utf8::IsWellFormed(text);
}

bool TakePrefix(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

/// A "+" may have been a plus or a blank. In a row of three, the middle one is a plus between blanks, as in
/// the names of some bands. All others are blanks: there can be two, or one at an end, where a remark in
/// brackets was removed from the name. A plus at an end of the name is lost.
std::string DecodeBlanks(std::string_view name) {
    std::string text;
    for (std::size_t at = 0; at < name.size();) {
        const std::size_t next = std::min(name.find_first_not_of('+', at), name.size());
        const bool isInside = at > 0 && next < name.size();
        if (isInside && next > at) text += next - at == 3 ? " + " : " ";
        if (next < name.size()) text += name[next];
        at = next + 1;
    }
    return text;
}

bool TakeEdition(std::string_view& target, Edition& edition) {
    edition = TakePrefix(target, "ja") ? Edition::Japanese : Edition::English;
    return edition == Edition::Japanese || TakePrefix(target, "en");
}

}  // namespace

std::optional<Search> ParseSearch(std::string_view target) {
    if (!TakePrefix(target, "/search?hl=")) return {};
    Search search;
    if (!TakeEdition(target, search.edition) || !TakePrefix(target, "&q=")) return {};
    const std::size_t end = target.rfind("&btnI=");
    if (end == target.npos) return {};
    target = target.substr(0, end);
    const std::size_t host = target.rfind('+');
    if (host == target.npos) return {};
    search.name = DecodeBlanks(target.substr(0, host));
    if (!IsTitle(search.name)) return {};
    return search;
}

std::optional<ArticleAddress> ParseArticleAddress(std::string_view target) {
    if (!TakePrefix(target, "/wiki/")) return {};
    ArticleAddress address;
    if (!TakeEdition(target, address.edition) || !TakePrefix(target, "/")) return {};
    auto title = PercentDecoded(target);
    if (!title || !IsTitle(*title)) return {};
    address.title = std::move(*title);
    return address;
}

std::string ArticleTarget(const ArticleAddress& address) {
    return (address.edition == Edition::Japanese ? "/wiki/ja/" : "/wiki/en/") + PercentEncoded(address.title);
}

}  // namespace sorakaze::gateway
