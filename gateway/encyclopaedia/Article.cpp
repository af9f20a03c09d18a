// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/encyclopaedia/Article.h"

#include <algorithm>
#include <cctype>
#include <iterator>

#include "base/Ascii.h"
#include "gateway/encyclopaedia/LeadText.h"
#include "gateway/encyclopaedia/Names.h"
#include "gateway/html/HtmlTree.h"

namespace sorakaze::gateway {
namespace {

constexpr std::size_t kMostNames = 64;
/// Of a lead or of a cell in a box; longer ones are cut.
constexpr std::size_t kLongestText = 16u << 10;

bool IsHiddenByStyle(HtmlNode element) {
    std::string style = ascii::Lowered(element.Attribute("style"));
    std::erase_if(style, [](unsigned char c) { return std::isspace(c); });
    return style.find("display:none") != style.npos;
}

/// Whether someone who reads the page aloud would leave it out: footnote marks, pronunciation, what is
/// hidden.
bool IsUnspoken(HtmlNode element) {
    if (IsOneOf(element.Tag(), {"style", "script", "noscript", "template", "table", "audio", "video", "rt",
                                "rp", "math", "svg", "figure"})) {
        return true;
    }
    if (element.Attribute("id") == "coordinates" || IsHiddenByStyle(element)) return true;
    return element.HasClass({"reference", "mw-ref", "noprint", "noexcerpt", "ext-phonos", "IPA", "haudio",
                             "Template-Fact", "Inline-Template", "geo", "geo-inline", "coordinates",
                             "mw-editsection", "shortdescription", "mwe-math-element", "metadata", "Z3988",
                             "mw-empty-elt", "error"});
}

/// Code points that show nothing.
bool IsZeroWidth(std::string_view text, std::size_t at) {
    const std::string_view bytes = text.substr(at, 3);
    if (bytes.starts_with("\xC2\xAD")) return true;  // a soft hyphen
    return (bytes >= "\xE2\x80\x8B" && bytes <= "\xE2\x80\x8F") ||
           (bytes >= "\xE2\x80\xAA" && bytes <= "\xE2\x80\xAE") ||
           (bytes >= "\xE2\x81\xA0" && bytes <= "\xE2\x81\xAF") || bytes == "\xEF\xBB\xBF";
}

/// How many bytes the blank at `at` has; 0 if it is none. The wide blank of Japanese counts as a character.
std::size_t BlankBytes(std::string_view text, std::size_t at) {
    if (static_cast<unsigned char>(text[at]) <= ' ') return 1;
    if (text.substr(at).starts_with("\xC2\xA0")) return 2;
    const std::string_view bytes = text.substr(at, 3);
    const bool isBlank = (bytes >= "\xE2\x80\x80" && bytes <= "\xE2\x80\x8A") || bytes == "\xE2\x80\xAF";
    return isBlank && bytes.size() == 3 ? 3 : 0;
}

void AppendText(std::string_view text, std::string& out) {
    for (std::size_t at = 0; at < text.size() && out.size() < kLongestText;) {
        if (const std::size_t blank = BlankBytes(text, at)) {
            out += ' ';
            at += blank;
        } else if (IsZeroWidth(text, at)) {
            at += text[at] == '\xC2' ? 2 : 3;
        } else {
            out += text[at++];
        }
    }
}

/// Appends what is read aloud, within the bound, with bold marked. `lineEnd` is put at a line's end and
/// between the items of a list.
void AppendSpoken(HtmlNode node, char lineEnd, std::string& out) {
    if (!node.IsElement()) return AppendText(node.Text(), out);
    if (IsUnspoken(node)) return;
    const std::string_view tag = node.Tag();
    const bool isBold = IsOneOf(tag, {"b", "strong"});
    if (isBold) out += kBoldBegins;
    for (const HtmlNode child : node.Children()) AppendSpoken(child, lineEnd, out);
    if (isBold) out += kBoldEnds;
    if (IsOneOf(tag, {"br", "li", "div", "dd"})) out += lineEnd;
}

std::string Spoken(HtmlNode node, char lineEnd = ' ') {
    std::string text;
    AppendSpoken(node, lineEnd, text);
    return text;
}

/// The text of a table's cell, without marks of bold and without blanks around it.
std::string CellText(HtmlNode node) {
    const std::string text = WithoutBoldMarks(Spoken(node, '\n'));
    const std::size_t begin = text.find_first_not_of(" \n");
    if (begin == text.npos) return {};
    return text.substr(begin, text.find_last_not_of(" \n") + 1 - begin);
}

HtmlNode FirstCell(HtmlNode row, std::string_view tag) {
    for (const HtmlNode cell : row.Children()) {
        if (cell.IsElement(tag)) return cell;
    }
    return {};
}

bool IsNickname(HtmlNode element) {
    return element.HasClass({"nickname"});
}

void CollectRows(HtmlNode node, InformationBox& box) {
    if (node.IsElement("tr")) {
        const HtmlNode label = FirstCell(node, "th");
        const HtmlNode value = FirstCell(node, "td");
        if (!label && value && box.rows.empty() && value.HasClass({"infobox-subheader"}) &&
            FindElement(value, &IsNickname)) {
            box.names.push_back(CellText(value));
        }
        if (label && value) box.rows.push_back({CellText(label), CellText(value)});
        if (label && !value) box.headings.push_back(CellText(label));
    }
    for (const HtmlNode child : node.Children()) CollectRows(child, box);
}

bool IsInformationBox(HtmlNode element) {
    return element.IsElement("table") && element.HasClass({"infobox"});
}

bool IsDisambiguationNotice(HtmlNode element) {
    return element.Attribute("id") == "disambigbox" ||
           element.HasClass({"dmbox-disambig", "mw-disambig-page"});
}

bool IsContent(HtmlNode element) {
    return element.HasClass({"mw-parser-output"});
}

bool IsBody(HtmlNode element) {
    return element.IsElement("body");
}

/// The paragraphs before the first heading that belong to the article itself and not to a box.
void CollectParagraphs(HtmlNode content, std::vector<std::string>& paragraphs, bool& ended) {
    for (const HtmlNode child : content.Children()) {
        if (child.IsElement("h2") || child.HasClass({"mw-heading"})) ended = true;
        if (ended) return;
        if (child.IsElement("section")) {
            CollectParagraphs(child, paragraphs, ended);
        } else if (child.IsElement("p") && !IsUnspoken(child)) {
            paragraphs.push_back(Spoken(child));
        }
    }
}

/// The first paragraph that has bold text or begins with the title: notices and coordinates can be paragraphs
/// too.
std::string_view FindLead(const std::vector<std::string>& paragraphs, std::string_view name) {
    const auto lead = std::ranges::find_if(paragraphs, [&](std::string_view text) {
        if (text.size() >= kLongestText) return false;
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
        return text.find(kBoldEnds) != text.npos || text.starts_with(name);
    });
    return lead == paragraphs.end() ? std::string_view() : std::string_view(*lead);
}

void AddNames(std::vector<std::string>&& more, std::vector<std::string>& names) {
    more.resize(std::min(more.size(), kMostNames));
    std::ranges::move(more, std::back_inserter(names));
}

}  // namespace

Article ReadArticle(std::string_view html, std::string_view title, Edition edition) {
    Article article;
    const HtmlTree tree(html);
    if (!tree.Root()) return article;
    article.isDisambiguation = static_cast<bool>(FindElement(tree.Root(), &IsDisambiguationNotice));

    if (const HtmlNode table = FindElement(tree.Root(), &IsInformationBox)) {
        InformationBox box;
        box.isOfWork = table.HasClass({"haudio", "vevent"});
        CollectRows(table, box);
        article.subject = SubjectOf(box);
        AddNames(OtherNames(box), article.names);
    }

    HtmlNode content = FindElement(tree.Root(), &IsContent);
    if (!content) content = FindElement(tree.Root(), &IsBody);
    std::vector<std::string> paragraphs;
    bool ended = false;
    CollectParagraphs(content, paragraphs, ended);
    const std::string_view name = WithoutQualifier(title);
    const std::string_view lead = FindLead(paragraphs, name);
    AddNames(NamesIn(lead, edition), article.names);
    article.summary = Summary(lead, name, edition);
    return article;
}

}  // namespace sorakaze::gateway
