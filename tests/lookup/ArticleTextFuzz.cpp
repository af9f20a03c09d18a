// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes as an article.
#include <cstddef>
#include <cstdint>
#include <string>

#include "lookup/ArticleText.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace sorakaze;
    const std::string page(reinterpret_cast<const char*>(data), size);
    for (const ShowLanguage language : {ShowLanguage::English, ShowLanguage::Japanese}) {
        if (const auto article = ReadArticle(page, language)) SpokenText(article->paragraph, language);
    }
    return 0;
}
