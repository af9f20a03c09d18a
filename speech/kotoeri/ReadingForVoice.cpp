// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/kotoeri/ReadingForVoice.h"

#include "base/Utf8.h"
#include "base/unicode/Characters.h"
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

bool HasHan(std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const auto [code, size] = utf8::Read(text, at);
        if (unicode::ScriptOf(code) == "Hani") return true;
        at += size;
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
    const bool isChinese = IsChinese(plain, surroundings);
    std::string reading = scripts::SpellOtherScripts(plain, {surroundings.language, isChinese}, read);
    // A name that a Japanese reader knows in parts is Chinese. Nothing is read where there is no dictionary.
    if (isChinese || scripts::HasKana(plain) || reading == plain || !HasHan(reading)) return reading;
    return scripts::SpellOtherScripts(plain, {surroundings.language, true}, read);
}

}  // namespace sorakaze::kotoeri
