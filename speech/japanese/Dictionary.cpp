// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/japanese/Dictionary.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <span>

#include "speech/japanese/Characters.h"
#include "speech/japanese/LikeliestPath.h"

namespace sorakaze::japanese {
namespace {

namespace fs = std::filesystem;

// The machine's default dictionary may be another, in another encoding and with other fields.
constexpr const char* kPlaces[] = {"/var/lib/mecab/dic/ipadic-utf8", "/usr/share/mecab/dic/ipadic-utf8",
                                   "/usr/lib/mecab/dic/ipadic-utf8", "/usr/local/lib/mecab/dic/ipadic-utf8",
                                   "/var/lib/mecab/dic/ipadic",      "/usr/share/mecab/dic/ipadic",
                                   "/usr/lib/mecab/dic/ipadic",      "/usr/lib64/mecab/dic/ipadic",
                                   "/usr/local/lib/mecab/dic/ipadic"};

std::unique_ptr<MeCab::Model> Open(const fs::path& folder) {
    // The dictionary's own settings are given, so that those of the machine and of the user are ignored.
    std::string settings = folder / "dicrc";
    std::string dictionary = folder;
    std::error_code failure;
    if (!fs::exists(folder / "sys.dic", failure) || !fs::exists(settings, failure)) return nullptr;
    std::array<char*, 5> arguments = {const_cast<char*>("mecab"), const_cast<char*>("-r"), settings.data(),
                                      const_cast<char*>("-d"), dictionary.data()};
    std::unique_ptr<MeCab::Model> model(
        MeCab::createModel(static_cast<int>(arguments.size()), arguments.data()));
    if (!model) return nullptr;
    const char* charset = model->dictionary_info()->charset;
    if (strcasecmp(charset, "utf-8") != 0 && strcasecmp(charset, "utf8") != 0) return nullptr;
    return model;
}

Morpheme FromNode(const MeCab::Node& node) {
    const Feature feature = FeatureOf(node);
    return {Decode({node.surface, node.length}),
            Decode(feature[kReading]),
            Decode(feature[kPronunciation]),
            {Decode(feature[0]), Decode(feature[1]), Decode(feature[2]), Decode(feature[3]),
             Decode(feature[4]), Decode(feature[5])},
            false};
}

/// For each byte of a sentence, and its end, whether a morpheme must begin there: MeCab's constants.
using Boundaries = std::vector<int>;

Boundaries BoundariesOf(std::u32string_view sentence) {
    std::vector<std::size_t> bytes = {0};  // where each character begins
    for (const char32_t code : sentence) bytes.push_back(bytes.back() + Encode({&code, 1}).size());
    Boundaries boundaries(bytes.back() + 1, MECAB_ANY_BOUNDARY);
    for (std::size_t at = 1; at < sentence.size(); ++at) {
        if (IsDigit(sentence[at - 1]) != IsDigit(sentence[at])) boundaries[bytes[at]] = MECAB_TOKEN_BOUNDARY;
    }
    return boundaries;
}

/// Requires a boundary after each kanji of unknown words, because some kanji are words by themselves. False
/// if there is nothing to split.
bool SplitUnknownKanji(Boundaries& boundaries, const std::vector<const MeCab::Node*>& path) {
    bool found = false;
    std::size_t at = 0;
    for (const MeCab::Node* node : path) {
        const std::u32string text = Decode({node->surface, node->length});
        const bool splits =
            node->stat == MECAB_UNK_NODE && text.size() > 1 && std::all_of(text.begin(), text.end(), IsKanji);
        for (const char32_t code : text) {
            at += Encode({&code, 1}).size();
            if (splits) boundaries[at] = MECAB_TOKEN_BOUNDARY;
        }
        found = found || splits;
    }
    return found;
}

}  // namespace

struct Dictionary::Impl {
    std::unique_ptr<MeCab::Model> model;
    std::unique_ptr<MeCab::Tagger> tagger;
};

Dictionary::Dictionary(const fs::path& folder) : impl_(std::make_unique<Impl>()) {
    if (!folder.empty()) {
        impl_->model = Open(folder);
    } else {
        for (const char* place : kPlaces) {
            impl_->model = Open(place);
            if (impl_->model) break;
        }
    }
    if (impl_->model) impl_->tagger.reset(impl_->model->createTagger());
    if (!impl_->tagger)
        throw NoDictionary("no IPA dictionary in UTF-8 " +
                           (folder.empty() ? std::string("on this machine") : "in " + folder.string()) +
                           ": install the package mecab-ipadic-utf8");
}

Dictionary::~Dictionary() = default;
Dictionary::Dictionary(Dictionary&&) noexcept = default;
Dictionary& Dictionary::operator=(Dictionary&&) noexcept = default;

std::vector<Morpheme> Dictionary::Segment(std::u32string_view sentence, Start start) const {
    // Any noun: what follows is then read as what follows a noun.
    const std::u32string before = start == Start::AfterWord ? U"曲" : U"";
    const std::u32string whole = before + std::u32string(sentence);
    const std::string bytes = Encode(whole);
    Boundaries boundaries = BoundariesOf(whole);
    if (!before.empty() && !sentence.empty()) boundaries[Encode(before).size()] = MECAB_TOKEN_BOUNDARY;
    std::unique_ptr<MeCab::Lattice> lattice;  // owns the path
    std::vector<const MeCab::Node*> path;
    do {
        // A lattice that was parsed once can't take new boundaries.
        lattice.reset(impl_->model->createLattice());
        lattice->set_sentence(bytes.data(), bytes.size());
        for (std::size_t at = 0; at < boundaries.size(); ++at) {
            if (boundaries[at] != MECAB_ANY_BOUNDARY) lattice->set_boundary_constraint(at, boundaries[at]);
        }
        if (!impl_->tagger->parse(lattice.get())) return {{std::u32string(sentence), {}, {}, {}}};
        path = LikeliestPath(*impl_->model, *lattice);
    } while (SplitUnknownKanji(boundaries, path));

    std::vector<Morpheme> morphemes;
    morphemes.reserve(path.size());
    for (const MeCab::Node* node : std::span(path).subspan(before.size()))
        morphemes.push_back(FromNode(*node));
    return morphemes;
}

}  // namespace sorakaze::japanese
