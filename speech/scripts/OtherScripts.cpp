// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/scripts/OtherScripts.h"

#include <optional>
#include <utility>

#include "base/Utf8.h"
#include "base/unicode/Characters.h"
#include "base/unicode/Transliteration.h"
#include "speech/scripts/Chinese.h"
#include "speech/scripts/ScriptsOfLanguage.h"
#include "speech/scripts/SpellingRules.h"

namespace sorakaze::scripts {
namespace {

/// No word of a title is longer, and rules look around.
constexpr std::size_t kLongestWord = 64;

struct Word {
    std::string_view bytes;
    std::u32string characters;
    std::string_view script;
};

/// The word that the text starts with: characters of one script with their marks, or one that many scripts
/// share.
Word FirstWord(std::string_view text) {
    Word word;
    std::size_t at = 0;
    while (at < text.size() && word.characters.size() < kLongestWord) {
        const auto [code, size] = utf8::Read(text, at);
        const std::string_view script = unicode::ScriptOf(code);
        if (at == 0)
            word.script = script;
        else if (script != "Zinh" && script != word.script)
            break;
        word.characters += code;
        at += size;
        if (word.script == "Zyyy") break;
    }
    word.bytes = text.substr(0, at);
    return word;
}

bool IsJapanese(const VoiceReading& voice) {
    return voice.language.substr(0, voice.language.find('-')) == "ja";
}

/// Without what rules leave of a script's marks: a shell knows some of those.
std::string OnlyWords(std::string_view spelt) {
    std::string words;
    for (std::size_t at = 0; at < spelt.size();) {
        const auto [code, size] = utf8::Read(spelt, at);
        if (code == U' ' || unicode::IsAlphanumeric(code)) words += spelt.substr(at, size);
        at += size;
    }
    return words;
}

/// Nothing for what stays.
std::optional<std::string> Spelling(const Word& word, const VoiceReading& voice) {
    const bool isChinese = word.script == "Hani" && (voice.isChinese || HasOnlyChinese(word.characters));
    if (LanguageReads(voice.language, word.script))
        return isChinese ? std::optional(std::string(word.bytes)) : std::nullopt;
    const char* const rules = isChinese ? kChineseRules : SpellingRules(word.script, word.characters);
    if (!rules) return {};
    const std::string latin = OnlyWords(unicode::Transliterated(word.bytes, rules));
    return IsJapanese(voice) ? unicode::Transliterated(latin, kKatakanaRules) : latin;
}

class Parts {
  public:
    /// `joint` is put where two words would run together.
    explicit Parts(std::string_view joint) : joint_(joint) {}
    void Add(std::string_view part) {
        if (part.empty()) return;
        if (endsInWord_ && unicode::IsAlphanumeric(utf8::Read(part, 0).code)) text_ += joint_;
        text_ += part;
        std::size_t last = part.size() - 1;
        while (last > 0 && utf8::IsContinuation(static_cast<unsigned char>(part[last]))) --last;
        endsInWord_ = unicode::IsAlphanumeric(utf8::Read(part, last).code);
    }
    std::string Take() { return std::move(text_); }

  private:
    const std::string_view joint_;
    std::string text_;
    bool endsInWord_ = false;
};

std::string Spell(std::string_view text, const VoiceReading& voice, std::string_view joint,
                  FunctionRef<std::string(std::string_view)> rest) {
    Parts parts(joint);
    std::size_t restBegin = 0, at = 0;
    const auto addRest = [&] {
        if (at > restBegin) parts.Add(rest(text.substr(restBegin, at - restBegin)));
    };
    while (at < text.size()) {
        const Word word = FirstWord(text.substr(at));
        if (const auto spelt = Spelling(word, voice)) {
            addRest();
            parts.Add(*spelt);
            restBegin = at + word.bytes.size();
        }
        at += word.bytes.size();
    }
    addRest();
    return parts.Take();
}

}  // namespace

std::string SpellOtherScripts(std::string_view text, const VoiceReading& voice,
                              FunctionRef<std::string(std::string_view)> rest) {
    return Spell(text, voice, ",", rest);
}

std::string SpellOtherScripts(std::string_view text, const VoiceReading& voice) {
    return Spell(text, voice, "", [](std::string_view part) { return std::string(part); });
}

}  // namespace sorakaze::scripts
