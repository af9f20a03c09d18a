// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/kotoeri/ReadingForVoice.h"

#include "speech/scripts/Chinese.h"
#include "speech/scripts/Lookalikes.h"
#include "speech/scripts/OtherScripts.h"
#include "speech/scripts/PlainLetters.h"
#include "speech/scripts/ScriptsOfLanguage.h"

namespace sorakaze::kotoeri {
namespace {

/// One name at a time: words of several don't make a Chinese sentence.
bool HasChineseName(std::string_view record) {
    while (!record.empty()) {
        const auto tab = record.find('\t');
        if (scripts::IsChinese(record.substr(0, tab))) return true;
        record.remove_prefix(tab == record.npos ? record.size() : tab + 1);
    }
    return false;
}

bool IsChinese(std::string_view text, const Surroundings& surroundings) {
    if (scripts::IsChinese(text)) return true;
    if (scripts::HasKana(text) || scripts::HasKana(surroundings.record)) return false;
    return scripts::LanguageReads(surroundings.language, "Hani") || HasChineseName(surroundings.record);
}

}  // namespace

std::string ReadingForVoice(std::string_view text, const Surroundings& surroundings,
                            FunctionRef<std::string(std::string_view)> read) {
    if (auto latin = scripts::LookalikeOf(text, surroundings.record); !latin.empty()) return latin;
    const std::string plain = scripts::PlainLetters(text);
    return scripts::SpellOtherScripts(plain, {surroundings.language, IsChinese(plain, surroundings)}, read);
}

}  // namespace sorakaze::kotoeri
