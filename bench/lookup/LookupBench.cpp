// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A lookup's own work: the search engine and the article, from a server that has both ready.
#include <benchmark/benchmark.h>

#include "tests/support/ScriptedServer.h"
#include "tests/support/TestShow.h"

namespace {

using namespace sorakaze;

/// An article of `size` bytes: letters of two scripts and markup, the paragraph that is told in the middle.
std::string Article(std::size_t size) {
    std::string page = "<a href='/wiki/Music_genre'>Genres</a>";
    const auto fill = [&page](std::size_t until) {
        while (page.size() < until)
            page += "<p>Some <i>words</i> of the article, ein paar Wörter mehr, 言葉.</p>\n";
    };
    fill(size / 2);
    page += "<p><b>The Name</b> (born 1970) <a href='x'>is</a> a singer[1].</p>\n";
    fill(size);
    return page;
}

void LookUp(benchmark::State& state) {
    const std::string page = Article(static_cast<std::size_t>(state.range(0)));
    test::ScriptedServer server([&](test::ScriptedServer::Connection& client) {
        const bool head = client.ReadRequest().starts_with("HEAD ");
        client.Send(head ? "HTTP/1.0 302 Found\r\nLocation: " + server.Url("/article") + "\r\n\r\n"
                         : "HTTP/1.0 200 OK\r\n\r\n");
        if (!head) client.Send(page);
    });
    test::TestShow show("", 1, nullptr, std::make_unique<WallClock>());
    show.window.deployment.searchHost = "127.0.0.1:" + std::to_string(server.Port());
    for (auto unused : state) {
        show.window.wikiHistory.clear();
        show.window.getContents("the name");
        if (!(show.window.wikiContents == "The Name  is a singer.")) state.SkipWithError("told wrongly");
    }
}
BENCHMARK(LookUp)->Arg(2'000)->Arg(2'000'000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
