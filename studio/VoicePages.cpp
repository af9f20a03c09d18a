// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/VoicePages.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>

#include "gateway/HtmlTree.h"

namespace sorakaze::studio {
namespace {

using gateway::Attribute;
using gateway::HtmlTree;
using gateway::IsElement;

char Lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

std::string Lowered(std::string_view text) {
    std::string lowered(text);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(), Lower);
    return lowered;
}

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
    const bool hidden = Lowered(Attribute(node, "type")) == "hidden";
    if (IsElement(node, GUMBO_TAG_INPUT) && hidden && !name.empty()) {
        form.fields.emplace_back(name, Attribute(node, "value"));
    }
    for (const GumboNode* child : gateway::Children(node)) CollectFields(child, form);
}

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n\f";
    const auto first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

void EncodeInto(std::string& body, std::string_view text) {
    constexpr char kHex[] = "0123456789ABCDEF";
    for (const char byte : text) {
        const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                           (byte >= '0' && byte <= '9') ||
                           std::string_view("*-._").find(byte) != std::string_view::npos;
        if (plain) {
            body += byte;
        } else if (byte == ' ') {
            body += '+';
        } else {
            const auto value = static_cast<unsigned char>(byte);
            body += {'%', kHex[value >> 4U], kHex[value & 15U]};
        }
    }
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
    if (!element || Lowered(Attribute(element, "method")) != "post") return {};
    PageForm form;
    form.action = Trimmed(Attribute(element, "action"));
    if (form.action.empty()) return {};
    CollectFields(element, form);
    return form;
}

std::string EncodeForm(const PageForm& form) {
    std::string body;
    for (const auto& [name, value] : form.fields) {
        if (!body.empty()) body += '&';
        EncodeInto(body, name);
        body += '=';
        EncodeInto(body, value);
    }
    return body;
}

std::string FindSound(std::string_view html) {
    const HtmlTree tree(html);
    const GumboNode* element = tree.Root() ? gateway::Find(tree.Root(), IsSound) : nullptr;
    return element ? std::string(Trimmed(Attribute(element, "src"))) : std::string();
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
