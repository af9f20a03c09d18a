// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "lookup/ArticleText.h"

#include "app/runtime/RegEx.h"

namespace sorakaze {
namespace {

/// Characters.
constexpr std::int32_t kLongestJapanese = 200;

/// The text without tags, bracketed remarks and double quotes.
String Clean(const String& text) {
    RegEx clutter;
    clutter.SearchPattern = String("(<.*?>)|(\\(.*?\\))|\\[.*?\\]|（.*?）|\\") + Chr(34);
    clutter.ReplacementPattern = "";
    clutter.Options.ReplaceAllMatches = true;
    return clutter.Replace(text);
}

}  // namespace

std::optional<ArtistArticle> ReadArticle(const String& page, ShowLanguage language) {
    ArtistArticle article;
    // The link is in the information box of every musician. Kept behaviour 56.
    if (language == ShowLanguage::English && InStr(page, "/wiki/Music_genre") == 0) return std::nullopt;
    article.paragraph = NthField(NthField(page, "<p><b>", 2), "</p>", 1);
    const String bold = NthField(article.paragraph, "</b>", 1);
    if (language == ShowLanguage::English && InStr(bold, "<") == 0) article.name = bold;  // kept behaviour 57
    return article;
}

String SpokenText(const String& paragraph, ShowLanguage language) {
    String text = Clean(paragraph);
    if (language == ShowLanguage::English) return text;
    text = ReplaceAll(text, " ", "");
    return Len(text) > kLongestJapanese ? String() : text;  // kept behaviour 59
}

}  // namespace sorakaze
