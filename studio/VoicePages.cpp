// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/VoicePages.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>

#include "base/Ascii.h"
#include "base/PercentCoding.h"
#include "gateway/HtmlTree.h"

namespace sorakaze::studio {
namespace {

using gateway::Attribute;
using gateway::HtmlTree;
using gateway::IsElement;

bool IsForm(const GumboNode* node) {
    return IsElement(node, GUMBO_TAG_FORM);
}

bool IsSound(const GumboNode* node) {
    const bool plays = IsElement(node, GUMBO_TAG_AUDIO) || IsElement(node, GUMBO_TAG_VIDEO) ||
                       IsElement(node, GUMBO_TAG_SOURCE) || IsElement(node, GUMBO_TAG_EMBED) ||
                       IsElement(node, GUMBO_TAG_BGSOUND);
    return plays && !Attribute(node, "src").empty();
}

/// By recursion, since no HtmlTree is deep.
void CollectFields(const GumboNode* node, PageForm& form) {
    const std::string_view name = Attribute(node, "name");
    const bool hidden = ascii::Lowered(Attribute(node, "type")) == "hidden";
    if (IsElement(node, GUMBO_TAG_INPUT) && hidden && !name.empty()) {
        form.fields.emplace_back(name, Attribute(node, "value"));
    }
    for (const GumboNode* child : gateway::Children(node)) CollectFields(child, form);
}

/// As a form sends it.
std::string FormEncoded(std::string_view text) {
    std::string encoded = PercentEncoded(text, " *-._");
    std::ranges::replace(encoded, ' ', '+');
    return encoded;
}

struct EndsUrl {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

std::string Part(CURLU& url, CURLUPart part) {
    char* text = nullptr;
    if (curl_url_get(&url, part, &text, 0) != CURLUE_OK) return {};
    std::string copy(text);
    curl_free(text);
    return copy;
}

}  // namespace

std::optional<PageForm> FindForm(std::string_view html) {
    const HtmlTree tree(html);
    const GumboNode* element = tree.Root() ? gateway::Find(tree.Root(), IsForm) : nullptr;
    if (!element || ascii::Lowered(Attribute(element, "method")) != "post") return {};
    PageForm form;
    form.action = ascii::Trimmed(Attribute(element, "action"));
    if (form.action.empty()) return {};
    CollectFields(element, form);
    return form;
}

std::string EncodeForm(const PageForm& form) {
    std::string body;
    for (const auto& [name, value] : form.fields) {
        if (!body.empty()) body += '&';
        body += FormEncoded(name);
        body += '=';
        body += FormEncoded(value);
    }
    return body;
}

std::string FindSound(std::string_view html) {
    const HtmlTree tree(html);
    const GumboNode* element = tree.Root() ? gateway::Find(tree.Root(), IsSound) : nullptr;
    return element ? std::string(ascii::Trimmed(Attribute(element, "src"))) : std::string();
}

std::string Resolve(const std::string& base, const std::string& reference) {
    const std::unique_ptr<CURLU, EndsUrl> url(curl_url());
    const bool known =
        url && !reference.empty() &&
        (base.empty() || curl_url_set(url.get(), CURLUPART_URL, base.c_str(), 0) == CURLUE_OK) &&
        curl_url_set(url.get(), CURLUPART_URL, reference.c_str(), 0) == CURLUE_OK;
    if (!known || Part(*url, CURLUPART_SCHEME) != "http") return {};
    return Part(*url, CURLUPART_URL);
}

bool IsLoopback(const std::string& address) {
    const std::unique_ptr<CURLU, EndsUrl> url(curl_url());
    if (!url || curl_url_set(url.get(), CURLUPART_URL, address.c_str(), 0) != CURLUE_OK) return false;
    const std::string host = Part(*url, CURLUPART_HOST);
    const bool number = host.find_first_not_of("0123456789.") == std::string::npos;
    return (number && host.starts_with("127.")) || host == "localhost" || host == "[::1]";
}

}  // namespace sorakaze::studio
