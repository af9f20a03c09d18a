// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "gateway/encyclopaedia/Article.h"

/// A title, a line's end, markup; both editions. A summary must be short and hold no marks of bold text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze::gateway;
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string_view title = input.substr(0, std::min<std::size_t>(input.find('\n'), 255));
    for (const Edition edition : {Edition::English, Edition::Japanese}) {
        const Article article = ReadArticle(input.substr(title.size()), title, edition);
        const auto characters =
            std::ranges::count_if(article.summary, [](char c) { return (c & 0xC0) != 0x80; });
        if (characters - std::ranges::count(article.summary, ' ') > 401) std::abort();
        if (article.summary.find_first_of("\x01\x02\"()[]\n") != article.summary.npos) std::abort();
    }
    return 0;
}
