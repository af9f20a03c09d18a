// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the announcer can say about an artist: the first paragraph in the encyclopaedia's article that begins
// in bold. The search engine's lucky button redirects to the article.
#include <chrono>

#include "app/runtime/Exceptions.h"
#include "app/runtime/Runtime.h"
#include "http/HTTPSocket.h"
#include "lookup/ArticleText.h"
#include "show/mainWindow.h"

namespace sorakaze {
namespace {

constexpr std::int32_t kTimeLimit = 30;  ///< seconds without progress
/// For a host that sends a byte now and then and would never time out. An article is a megabyte or two, a
/// head a few kilobytes.
constexpr SocketCore::Bounds kBounds{std::chrono::minutes(3), std::uint64_t{24} << 20, std::size_t{2} << 20};

/// Kept behaviour 54.
String SearchAddress(const Deployment& deployment, const String& name, ShowLanguage showLanguage) {
    const bool japanese = showLanguage == ShowLanguage::Japanese;
    const String language = japanese ? "ja" : "en";
    const String encyclopaedia =
        japanese ? deployment.encyclopaediaJapanese : deployment.encyclopaediaEnglish;
    return String("http://") + deployment.searchHost + "/search?hl=" + language +
           "&q=" + ReplaceAll(name, " ", "+") + "+" + encyclopaedia + "&btnI=I'm+feeling+Lucky";
}

/// The article that the search engine's redirect leads to; empty where there is none. Kept behaviour 55.
String FetchArticle(const String& searchAddress) {
    HTTPSocket socket;
    socket.Constructor();
    socket.SetBounds(kBounds);
    socket.Yield = true;
    socket.SetRequestHeader("User-Agent", "MSIE");
    const InternetHeadersRef headers = socket.GetHeaders(searchAddress, kTimeLimit);
    if (socket.HTTPStatusCode() != 302) return {};
    return ConvertEncoding(socket.Get(NotNil(headers)->Value("Location"), kTimeLimit), Encodings::UTF8);
}

/// By index, because another thread may change the history at each yield.
bool Remembers(const std::vector<String>& history, const String& name) {
    for (std::size_t i = 0; i < history.size(); ++i) {
        if (history[i] == name) return true;
        Yield();
    }
    return false;
}

}  // namespace

/// An artist is told of once a show. Kept behaviour 58.
void mainWindow::getContents(String name) {
    try {
        wikiContents = String();
        // Asked for at each step: another show may have begun meanwhile.
        const auto language = [this] {
            return isJapaneseOn ? ShowLanguage::Japanese : ShowLanguage::English;
        };
        const String page = FetchArticle(SearchAddress(deployment, name, language()));
        const auto article = ReadArticle(page, language());
        if (!article) return;
        if (article->name) artist = *article->name;
        if (Remembers(wikiHistory, name)) return;
        wikiHistory.push_back(name);
        if (article->paragraph.IsEmpty()) return;
        wikiContents = SpokenText(article->paragraph, language());
    } catch (const RegExException& exception) {
        MsgBox(exception.Message());
    }
}

}  // namespace sorakaze
