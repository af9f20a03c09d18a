// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/scripts/ScriptsOfLanguage.h"

#include <algorithm>
#include <iterator>

namespace sorakaze::scripts {
namespace {

struct LanguageScript {
    std::string_view language, script;
};

constexpr LanguageScript kLanguages[] = {
    {"ru", "Cyrl"}, {"uk", "Cyrl"},  {"be", "Cyrl"},  {"bg", "Cyrl"},  {"mk", "Cyrl"},  {"sr", "Cyrl"},
    {"kk", "Cyrl"}, {"ky", "Cyrl"},  {"mn", "Cyrl"},  {"tt", "Cyrl"},  {"ba", "Cyrl"},  {"cv", "Cyrl"},
    {"el", "Grek"}, {"grc", "Grek"}, {"ka", "Geor"},  {"hy", "Armn"},  {"hyw", "Armn"}, {"he", "Hebr"},
    {"yi", "Hebr"}, {"ar", "Arab"},  {"fa", "Arab"},  {"ur", "Arab"},  {"sd", "Arab"},  {"ug", "Arab"},
    {"th", "Thai"}, {"hi", "Deva"},  {"mr", "Deva"},  {"ne", "Deva"},  {"kok", "Deva"}, {"sa", "Deva"},
    {"bn", "Beng"}, {"as", "Beng"},  {"gu", "Gujr"},  {"pa", "Guru"},  {"or", "Orya"},  {"ta", "Taml"},
    {"te", "Telu"}, {"kn", "Knda"},  {"ml", "Mlym"},  {"si", "Sinh"},  {"am", "Ethi"},  {"my", "Mymr"},
    {"ko", "Hang"}, {"zh", "Hani"},  {"cmn", "Hani"}, {"yue", "Hani"}, {"hak", "Hani"}, {"nan", "Hani"}};

}  // namespace

bool LanguageReads(std::string_view language, std::string_view script) {
    const std::string_view main = language.substr(0, language.find_first_of("-_"));
    return std::any_of(std::begin(kLanguages), std::end(kLanguages), [&](const LanguageScript& known) {
        return known.language == main && known.script == script;
    });
}

}  // namespace sorakaze::scripts
