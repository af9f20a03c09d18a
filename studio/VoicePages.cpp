// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/VoicePages.h"

#include <algorithm>

#include "base/Ascii.h"
#include "base/PercentCoding.h"
#include "gateway/html/HtmlTree.h"
#include "network/web/WebAddress.h"

namespace sorakaze::studio {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\f";

using gateway::FindElement;
using gateway::HtmlNode;
using gateway::HtmlTree;

bool IsForm(HtmlNode element) {
    return element.IsElement("form");
}

bool IsSound(HtmlNode element) {
    const std::string_view tag = element.Tag();
    const bool plays =
        tag == "audio" || tag == "video" || tag == "source" || tag == "embed" || tag == "bgsound";
    return plays && !element.Attribute("src").empty();
}

/// By recursion, since no HtmlTree is deep.
void CollectFields(HtmlNode node, PageForm& form) {
    const std::string_view name = node.Attribute("name");
    const bool isHidden = ascii::Lowered(node.Attribute("type")) == "hidden";
    if (node.IsElement("input") && isHidden && !name.empty()) {
        form.fields.emplace_back(name, node.Attribute("value"));
    }
    for (const HtmlNode child : node.Children()) CollectFields(child, form);
}

/// As a form sends it.
std::string FormEncoded(std::string_view text) {
    std::string encoded = PercentEncoded(text, " *-._");
    std::ranges::replace(encoded, ' ', '+');
    return encoded;
}

}  // namespace

std::optional<PageForm> FindForm(std::string_view html) {
    const HtmlTree tree(html);
    const HtmlNode element = FindElement(tree.Root(), IsForm);
    if (!element || ascii::Lowered(element.Attribute("method")) != "post") return {};
    PageForm form;
    form.action = ascii::Trimmed(element.Attribute("action"), kBlanks);
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
    const HtmlNode element = FindElement(tree.Root(), IsSound);
    return element ? std::string(ascii::Trimmed(element.Attribute("src"), kBlanks)) : std::string();
}

std::string Resolve(const std::string& base, const std::string& reference) {
    std::string address = web::Resolve(base, reference);
    return web::ParseAddress(address).scheme == "http" ? address : std::string();
}

bool IsLoopback(const std::string& address) {
    const std::string host = web::ParseAddress(address).host;
    const bool isNumber = host.find_first_not_of("0123456789.") == std::string::npos;
    return (isNumber && host.starts_with("127.")) || host == "localhost" || host == "[::1]";
}

}  // namespace sorakaze::studio
