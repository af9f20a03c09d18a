// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What every show pays for the gateway, and what reading an article costs.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "gateway/Gateway.h"
#include "gateway/encyclopaedia/Article.h"

namespace sorakaze::gateway {
namespace {

void StartsAndEnds(benchmark::State& state) {
    for (auto _ : state) Gateway gateway({});
}
BENCHMARK(StartsAndEnds)->Unit(benchmark::kMicrosecond);

void ReadsAnArticle(benchmark::State& state) {
    std::string page = "<div class=\"mw-parser-output\"><table class=\"infobox vcard\"><tbody>";
    const std::string row =
        "<tr><th scope=\"row\" class=\"infobox-label\">Genres</th><td class=\"infobox-data\"><a "
        "href=\"/wiki/Rock_music\" "
        "title=\"Rock music\">Rock</a>, <span class=\"nowrap\">pop</span></td></tr>";
    while (page.size() < static_cast<std::size_t>(state.range(0))) page += row;
    page +=
        "</tbody></table><p><b>Somebody</b> (born 1970) is a singer.<sup "
        "class=\"reference\">&#91;1&#93;</sup></p></div>";
    for (auto _ : state) benchmark::DoNotOptimize(ReadArticle(page, "Somebody", Edition::English));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(page.size()));
}
BENCHMARK(ReadsAnArticle)->Arg(20'000)->Arg(100'000)->Arg(300'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace sorakaze::gateway

BENCHMARK_MAIN();
