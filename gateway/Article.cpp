// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/Article.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <optional>

#include "base/Ascii.h"
#include "gateway/HtmlTree.h"
#include "gateway/LeadText.h"
#include "gateway/Names.h"

namespace sorakaze::gateway {
namespace {

constexpr std::size_t kMostNames = 64;
/// No lead is longer, and no row of a box.
constexpr std::size_t kLongestText = 16u << 10;

bool IsHiddenByStyle(const GumboNode* element) {
    std::string style = ascii::Lowered(Attribute(element, "style"));
    std::erase_if(style, [](unsigned char c) { return std::isspace(c); });
    return style.find("display:none") != style.npos;
}

/// Whether a reader of the text wouldn't read it: footnote marks, pronunciation, what the page hides.
bool IsUnspoken(const GumboNode* element) {
    for (const GumboTag tag : {GUMBO_TAG_STYLE, GUMBO_TAG_SCRIPT, GUMBO_TAG_NOSCRIPT, GUMBO_TAG_TEMPLATE,
                               GUMBO_TAG_TABLE, GUMBO_TAG_AUDIO, GUMBO_TAG_VIDEO, GUMBO_TAG_RT, GUMBO_TAG_RP,
                               GUMBO_TAG_MATH, GUMBO_TAG_SVG, GUMBO_TAG_FIGURE}) {
        if (element->v.element.tag == tag) return true;
    }
    if (Attribute(element, "id") == "coordinates" || IsHiddenByStyle(element)) return true;
    return HasClass(element,
                    {"reference", "mw-ref", "noprint", "noexcerpt", "ext-phonos", "IPA", "haudio",
                     "Template-Fact", "Inline-Template", "geo", "geo-inline", "coordinates", "mw-editsection",
                     "shortdescription", "mwe-math-element", "metadata", "Z3988", "mw-empty-elt", "error"});
}

/// Code points that are seen as nothing.
bool IsZeroWidth(std::string_view text, std::size_t at) {
    const std::string_view bytes = text.substr(at, 3);
    if (bytes.starts_with("\xC2\xAD")) return true;  // a soft hyphen
    return (bytes >= "\xE2\x80\x8B" && bytes <= "\xE2\x80\x8F") ||
           (bytes >= "\xE2\x80\xAA" && bytes <= "\xE2\x80\xAE") ||
           (bytes >= "\xE2\x81\xA0" && bytes <= "\xE2\x81\xAF") || bytes == "\xEF\xBB\xBF";
}

/// The bytes of a blank that isn't ASCII's, the wide one of Japanese left as it is; 0 for others.
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

/// What a reader reads, as far as the bound, with bold marked. `lineEnd` stands for a line's end and between
/// the items of a list.
void AppendSpoken(const GumboNode* node, char lineEnd, std::string& out) {
    if (node->type == GUMBO_NODE_TEXT || node->type == GUMBO_NODE_WHITESPACE) {
        return AppendText(node->v.text.text, out);
    }
    if (node->type != GUMBO_NODE_ELEMENT || IsUnspoken(node)) return;
    const GumboTag tag = node->v.element.tag;
    const bool isBold = tag == GUMBO_TAG_B || tag == GUMBO_TAG_STRONG;
    if (isBold) out += kBoldBegins;
    for (const GumboNode* child : Children(node)) AppendSpoken(child, lineEnd, out);
    if (isBold) out += kBoldEnds;
    if (tag == GUMBO_TAG_BR || tag == GUMBO_TAG_LI || tag == GUMBO_TAG_DIV || tag == GUMBO_TAG_DD)
        out += lineEnd;
}

std::string Spoken(const GumboNode* node, char lineEnd = ' ') {
    std::string text;
    AppendSpoken(node, lineEnd, text);
    return text;
}

/// Without what marks bold, and without blanks around.
std::string Cell(const GumboNode* node) {
    std::string text = Spoken(node, '\n');
    std::erase_if(text, [](char c) { return c == kBoldBegins || c == kBoldEnds; });
    const std::size_t begin = text.find_first_not_of(" \n");
    if (begin == text.npos) return {};
    return text.substr(begin, text.find_last_not_of(" \n") + 1 - begin);
}

void CollectRows(const GumboNode* node, InformationBox& box) {
    if (IsElement(node, GUMBO_TAG_TR)) {
        const auto cells = Children(node);
        const auto of = [&](GumboTag tag) {
            const auto cell =
                std::ranges::find_if(cells, [&](const GumboNode* c) { return IsElement(c, tag); });
            return cell == cells.end() ? nullptr : *cell;
        };
        const GumboNode* label = of(GUMBO_TAG_TH);
        const GumboNode* value = of(GUMBO_TAG_TD);
        if (label && value) box.rows.push_back({Cell(label), Cell(value)});
        if (label && !value) box.headings.push_back(Cell(label));
    }
    for (const GumboNode* child : Children(node)) CollectRows(child, box);
}

bool IsInformationBox(const GumboNode* element) {
    return IsElement(element, GUMBO_TAG_TABLE) && HasClass(element, {"infobox"});
}

bool IsDisambiguationNotice(const GumboNode* element) {
    return Attribute(element, "id") == "disambigbox" ||
           HasClass(element, {"dmbox-disambig", "mw-disambig-page"});
}

bool IsContent(const GumboNode* element) {
    return HasClass(element, {"mw-parser-output"});
}
bool IsBody(const GumboNode* element) {
    return IsElement(element, GUMBO_TAG_BODY);
}

/// The paragraphs before the first heading that stand in the article itself, not in a box.
void CollectParagraphs(const GumboNode* content, std::vector<std::string>& paragraphs, bool& ended) {
    for (const GumboNode* child : Children(content)) {
        if (IsElement(child, GUMBO_TAG_H2) || HasClass(child, {"mw-heading"})) ended = true;
        if (ended) return;
        if (IsElement(child, GUMBO_TAG_SECTION)) {
            CollectParagraphs(child, paragraphs, ended);
        } else if (IsElement(child, GUMBO_TAG_P) && !IsUnspoken(child)) {
            paragraphs.push_back(Spoken(child));
        }
    }
}

/// The first one that has something in bold or begins with the title: notices and coordinates can stand in
/// paragraphs too.
std::string_view Lead(const std::vector<std::string>& paragraphs, std::string_view name) {
    const auto lead = std::ranges::find_if(paragraphs, [&](std::string_view text) {
        if (text.size() >= kLongestText) return false;
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
        return text.find(kBoldEnds) != text.npos || text.starts_with(name);
    });
    return lead == paragraphs.end() ? std::string_view() : std::string_view(*lead);
}

void Append(std::vector<std::string>&& more, std::vector<std::string>& names) {
    more.resize(std::min(more.size(), kMostNames));
    std::ranges::move(more, std::back_inserter(names));
}

}  // namespace

Article ReadArticle(std::string_view html, std::string_view title, Edition edition) {
    Article article;
    const HtmlTree tree(html);
    if (!tree.Root()) return article;
    article.disambiguates = Find(tree.Root(), &IsDisambiguationNotice) != nullptr;

    if (const GumboNode* table = Find(tree.Root(), &IsInformationBox)) {
        InformationBox box;
        box.isOfWork = HasClass(table, {"haudio", "vevent"});
        CollectRows(table, box);
        article.box = Judge(box);
        Append(NamesIn(box), article.names);
    }

    const GumboNode* content = Find(tree.Root(), &IsContent);
    if (!content) content = Find(tree.Root(), &IsBody);
    std::vector<std::string> paragraphs;
    bool ended = false;
    if (content) CollectParagraphs(content, paragraphs, ended);
    const std::string_view name = WithoutQualifier(title);
    const std::string_view lead = Lead(paragraphs, name);
    Append(NamesIn(lead, edition), article.names);
    article.told = Told(lead, name, edition);
    return article;
}

}  // namespace sorakaze::gateway
