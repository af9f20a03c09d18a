// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/Romanisation.h"

#include <string_view>

#include "base/Utf8.h"
#include "speech/KanaTable.h"

namespace sorakaze {
namespace {

/// The spelling of a small tsu before a row spelt `romaji`. Kept behaviour 52.
std::string Filler(const std::string& romaji, const std::string& smallTsu) {
    const bool spelledOut = std::string_view("aiueon").find(romaji.front()) != std::string_view::npos;
    return spelledOut ? smallTsu : romaji.substr(0, 1);
}

}  // namespace

String Romanise(const String& reading, const std::vector<String>& kana, const std::vector<String>& romaji,
                FunctionRef<void()> afterEach) {
    // Kana have no letter case, so rows are told apart by their bytes.
    std::string_view rest = reading.Bytes();
    std::string result;
    std::size_t waiting = 0;  // small tsus
    const std::string smallTsu = romaji[kSmallTsuRow].Bytes();
    const auto append = [&](const std::string& filler, std::string_view text) {
        for (; waiting > 0; --waiting) result += filler;
        result += text;
    };
    while (!rest.empty()) {
        std::size_t row = 0;
        while (row < kana.size() && !rest.starts_with(kana[row].Bytes())) ++row;
        if (row == kana.size()) {
            const std::size_t size = utf8::Read(rest, 0).size;
            append(smallTsu, rest.substr(0, size));
            rest.remove_prefix(size);
        } else {
            if (row == kSmallTsuRow) {
                ++waiting;
            } else {
                const std::string& spelling = romaji[row].Bytes();
                append(Filler(spelling, smallTsu), spelling);
            }
            rest.remove_prefix(kana[row].Bytes().size());
        }
        afterEach();
    }
    return result;
}

}  // namespace sorakaze
