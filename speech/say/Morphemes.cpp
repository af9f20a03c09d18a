// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/Morphemes.h"

#include <mecab.h>

#include <array>
#include <filesystem>
#include <memory>
#include <span>
#include <stdexcept>

namespace sorakaze::speech {
namespace {

/// The one dictionary whose fields are known here, whatever the system's default is.
constexpr std::array kDictionaries = {"/var/lib/mecab/dic/ipadic-utf8", "/usr/lib/mecab/dic/ipadic-utf8",
                                      "/usr/share/mecab/dic/ipadic-utf8"};

std::unique_ptr<MeCab::Tagger> OpenDictionary() {
    for (const char* folder : kDictionaries) {
        std::error_code ignored;
        if (!std::filesystem::exists(std::filesystem::path(folder) / "sys.dic", ignored)) continue;
        // Without a configuration of the system's or the user's.
        const std::array arguments = {"say", "-r", "/dev/null", "-d", folder};
        std::array<char*, arguments.size()> words{};
        for (std::size_t i = 0; i < words.size(); ++i) words[i] = const_cast<char*>(arguments[i]);
        if (auto* tagger = MeCab::createTagger(static_cast<int>(words.size()), words.data())) {
            return std::unique_ptr<MeCab::Tagger>(tagger);
        }
    }
    throw std::runtime_error("the Japanese dictionary is missing; install mecab-ipadic-utf8");
}

/// Field `index` of a comma-separated line; empty for "*" and where there are fewer.
std::string Field(std::string_view line, int index) {
    for (; index > 0; --index) {
        const auto comma = line.find(',');
        if (comma == std::string_view::npos) return {};
        line.remove_prefix(comma + 1);
    }
    line = line.substr(0, line.find(','));
    return line == "*" ? std::string() : std::string(line);
}

/// The reading of a name that the dictionary lacks, character by character.
std::string SpellOut(MeCab::Tagger& tagger, std::string_view surface) {
    std::string pronunciation;
    while (!surface.empty()) {
        std::size_t size = 1;
        while (size < surface.size() && (static_cast<unsigned char>(surface[size]) & 0xC0U) == 0x80U) ++size;
        const MeCab::Node* node = tagger.parseToNode(surface.data(), size)->next;
        const bool known = node && node->stat == MECAB_NOR_NODE;
        pronunciation += known ? Field(node->feature, 8) : std::string(surface.substr(0, size));
        surface.remove_prefix(size);
    }
    return pronunciation;
}

}  // namespace

std::vector<Morpheme> FindMorphemes(const std::string& text) {
    const auto tagger = OpenDictionary();
    std::vector<Morpheme> morphemes;
    for (const MeCab::Node* node = tagger->parseToNode(text.data(), text.size()); node; node = node->next) {
        if (node->stat != MECAB_NOR_NODE && node->stat != MECAB_UNK_NODE) continue;
        const auto begin = static_cast<std::size_t>(node->surface - text.data());
        morphemes.push_back({begin, begin + node->length, std::string(node->surface, node->length),
                             Field(node->feature, 0), Field(node->feature, 1), Field(node->feature, 4),
                             Field(node->feature, 8)});
    }
    for (Morpheme& morpheme : morphemes) {
        const bool spelled = morpheme.pronunciation.empty() && morpheme.kind == "名詞" &&
                             static_cast<unsigned char>(morpheme.surface.front()) >= 0xE4;
        if (spelled) morpheme.pronunciation = SpellOut(*tagger, morpheme.surface);
    }
    return morphemes;
}

}  // namespace sorakaze::speech
