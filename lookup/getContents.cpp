// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What the announcer can say about an artist: the first paragraph in the encyclopaedia's article that begins
// in bold. The search engine's lucky button redirects to the article.
#include <algorithm>
#include <chrono>

#include "app/runtime/Exceptions.h"
#include "app/runtime/Runtime.h"
#include "http/HTTPSocket.h"
#include "lookup/ArticleText.h"
#include "show/mainWindow.h"

namespace sorakaze {
namespace {

constexpr std::int32_t kTimeLimit = 30;  ///< seconds without progress
constexpr std::int32_t kTimedOut = -1;   ///< as an error code
constexpr std::int32_t kTooManyRequests = 429;
constexpr std::int32_t kServerFails = 500;
constexpr std::int32_t kLongestReason = 200;  ///< characters
constexpr std::int32_t kLongestSource = 1000;
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

/// Why `host` didn't tell whether there is an article; empty if it did.
String FailureOf(const String& host, HTTPSocket& socket) {
    if (socket.ErrorCode() == kTimedOut) return host + " did not answer in time";
    if (socket.ErrorCode() != 0) return host + " could not be reached";
    // Our own service has no other status for an article that it couldn't ask for than "not found".
    const InternetHeadersRef headers = socket.PageHeaders();
    const String told = headers ? Left(headers->Value("Failure"), kLongestReason) : String();
    if (!told.IsEmpty()) return told;
    const std::int32_t status = socket.HTTPStatusCode();
    if (status == 0) return host + " gave no answer";
    const bool failed = status == kTooManyRequests || status >= kServerFails;
    return failed ? host + " answered with the status " + Str(status) : String();
}

/// What our own service says of the page's text.
TextSource SourceOf(HTTPSocket& socket) {
    const InternetHeadersRef headers = socket.PageHeaders();
    if (!headers) return {};
    const auto value = [&](const char* name) { return Left(headers->Value(name), kLongestSource); };
    return {value("Source-Title"), value("Source-Address"), value("Source-Licence")};
}

struct FetchedArticle {
    String page;
    TextSource source;
};

/// The article that the search engine's redirect leads to; empty where there is none. Kept behaviour 55.
FetchedArticle FetchArticle(const String& searchAddress, String& failure) {
    HTTPSocket socket;
    socket.Constructor();
    socket.SetBounds(kBounds);
    socket.Yield = true;
    socket.SetRequestHeader("User-Agent", "MSIE");
    const InternetHeadersRef headers = socket.GetHeaders(searchAddress, kTimeLimit);
    if (socket.HTTPStatusCode() != 302) {
        failure = FailureOf("the search engine", socket);
        return {};
    }
    const String page = socket.Get(NotNil(headers)->Value("Location"), kTimeLimit);
    failure = FailureOf("the encyclopaedia", socket);
    return {ConvertEncoding(page, Encodings::UTF8), SourceOf(socket)};
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

/// Once a show: without a network every lookup fails.
void mainWindow::tellLookupFailure(const String& why) {
    if (why.IsEmpty() || deployment.searchHost.empty()) return;
    if (std::find(lookupFailures.begin(), lookupFailures.end(), why) != lookupFailures.end()) return;
    lookupFailures.push_back(why);
    tell(ShowEvent::Kind::Failed, {{"what", "lookup"}, {"path", ""}, {"why", why}});
}

/// An artist is told of once a show. Kept behaviour 58.
void mainWindow::getContents(String name) {
    try {
        wikiContents = String();
        // Asked for at each step: another show may have begun meanwhile.
        const auto language = [this] {
            return isJapaneseOn ? ShowLanguage::Japanese : ShowLanguage::English;
        };
        String failure;
        const auto [page, source] = FetchArticle(SearchAddress(deployment, name, language()), failure);
        tellLookupFailure(failure);
        const auto article = ReadArticle(page, language());
        if (!article) return;
        if (article->name) artist = *article->name;
        if (Remembers(wikiHistory, name)) return;
        wikiHistory.push_back(name);
        if (article->paragraph.IsEmpty()) return;
        wikiSource = source;
        wikiContents = SpokenText(article->paragraph, language());
    } catch (const RegExException& exception) {
        MsgBox(exception.Message());
    }
}

}  // namespace sorakaze
