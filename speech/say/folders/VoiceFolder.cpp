// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/folders/VoiceFolder.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "base/PrintableText.h"

namespace sorakaze::speech {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostFiles = 1000;
constexpr std::size_t kLargestText = 1 << 20;  // bytes of a JSON file or a model card
constexpr std::streamoff kNotes = 64 << 10;    // bytes at the end of a model

/// The beginning of a file, or its end.
enum class Part { Beginning, End };
std::string ReadPart(const fs::path& file, Part part, std::size_t most) {
    std::error_code failure;
    if (!fs::is_regular_file(file, failure)) return {};
    std::ifstream stream(file, std::ios::binary);
    if (part == Part::End) {
        stream.seekg(0, std::ios::end);
        const auto size = static_cast<std::streamoff>(stream.tellg());
        stream.seekg(std::max<std::streamoff>(size - static_cast<std::streamoff>(most), 0));
    }
    std::string bytes(most, '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(most));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    return bytes;
}

/// The folder's files, the shortest names first: "model.onnx" comes before "model.int8.onnx".
std::vector<fs::path> FilesOf(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end;
         !failure && entry != end && files.size() < kMostFiles; entry.increment(failure)) {
        std::error_code ignored;
        if (entry->is_regular_file(ignored)) files.push_back(entry->path());
    }
    std::sort(files.begin(), files.end(), [](const fs::path& a, const fs::path& b) {
        const auto &first = a.native(), &second = b.native();
        return std::pair(first.size(), first) < std::pair(second.size(), second);
    });
    return files;
}

bool IsVocoder(const fs::path& file) {
    const std::string name = file.filename().string();
    return name.starts_with("vocos") || name.starts_with("hifigan") || name.starts_with("vocoder");
}

fs::path Existing(const fs::path& path) {
    std::error_code failure;
    return fs::exists(path, failure) ? path : fs::path();
}

NeuralKind KindOf(const VoiceModel& model, const std::string& notes) {
    const std::string type = NoteOfModel(notes, "model_type");
    if (!model.speakers.empty()) {
        const bool isKitten =
            type.starts_with("kitten") || model.model.string().find("kitten") != std::string::npos;
        return isKitten ? NeuralKind::Kitten : NeuralKind::Kokoro;
    }
    return model.vocoder.empty() ? NeuralKind::Vits : NeuralKind::Matcha;
}

/// Adds a voice's models and completes its description from its files.
class FolderReader {
  public:
    explicit FolderReader(VoiceFolder& voice) : voice_(voice), files_(FilesOf(voice.path)) {}

    void Read() {
        ReadDescription();
        const fs::path model = ChosenFile(".onnx", [](const fs::path& file) { return !IsVocoder(file); });
        if (!model.empty()) {
            const std::string notes = ReadPart(model, Part::End, kNotes);
            AddSherpa(model, notes);
            AddPiper(model);
            for (const char* key : {"voice", "language"}) SetLanguage(NoteOfModel(notes, key));
        }
        Add(EngineKind::Flite, ".flitevox");
        SetLanguage(LanguageInName(model.stem().string()));
        SetLanguage(LanguageInName(voice_.name));
        Add(voice_.description.language.starts_with("ja") ? EngineKind::OpenJTalk : EngineKind::Hts,
            ".htsvoice");
        if (const auto engine = voice_.description.engine)
            std::erase_if(voice_.models, [&](const VoiceModel& one) { return one.engine != engine; });
        ReadModelCard();
    }

  private:
    void ReadDescription() {
        const fs::path file = voice_.path / "voice.json";
        std::error_code failure;
        if (!fs::exists(file, failure)) return;
        std::string complaint;
        voice_.description = ReadVoiceDescription(ReadPart(file, Part::Beginning, kLargestText), complaint);
        if (!complaint.empty()) voice_.complaint = file.string() + ": " + complaint;
    }

    /// The file that the description names, or else the first that fits.
    template <typename Fits>
    fs::path ChosenFile(std::string_view ending, Fits fits) const {
        const fs::path named = voice_.path / voice_.description.model;
        if (!voice_.description.model.empty())
            return named.extension() == ending ? Existing(named) : fs::path();
        const auto found = std::find_if(files_.begin(), files_.end(), [&](const fs::path& file) {
            return file.extension() == ending && fits(file);
        });
        return found == files_.end() ? fs::path() : *found;
    }

    void Add(EngineKind engine, std::string_view ending) {
        VoiceModel model;
        model.engine = engine;
        model.model = ChosenFile(ending, [](const fs::path&) { return true; });
        if (!model.model.empty()) voice_.models.push_back(std::move(model));
    }

    void AddSherpa(const fs::path& file, const std::string& notes) {
        const fs::path folder = file.parent_path();
        VoiceModel model;
        model.engine = EngineKind::Sherpa;
        model.model = file;
        model.tokens = Existing(folder / "tokens.txt");
        if (model.tokens.empty()) return;
        model.speakers = Existing(folder / "voices.bin");
        model.espeakData = Existing(folder / "espeak-ng-data");
        for (const fs::path& other : FilesOf(folder)) {
            if (other.extension() == ".onnx" && IsVocoder(other)) model.vocoder = other;
            if (!other.filename().string().starts_with("lexicon") || other.extension() != ".txt") continue;
            model.lexicons =
                model.lexicons.empty() ? other : fs::path(model.lexicons.string() + "," + other.string());
        }
        model.kind = KindOf(model, notes);
        voice_.models.push_back(std::move(model));
    }

    void AddPiper(const fs::path& file) {
        VoiceModel model;
        model.engine = EngineKind::Piper;
        model.model = file;
        model.config = Existing(file.string() + ".json");
        if (model.config.empty()) return;
        const auto config =
            nlohmann::json::parse(ReadPart(model.config, Part::Beginning, kLargestText), nullptr, false);
        const auto text = [&](const char* pointer) {
            const nlohmann::json::json_pointer where(pointer);
            const bool isThere = config.is_object() && config.contains(where) && config[where].is_string();
            return isThere ? config[where].get<std::string>() : std::string();
        };
        SetLanguage(text("/language/code"));
        SetLanguage(text("/espeak/voice"));
        voice_.models.push_back(std::move(model));
    }

    /// The first that is known stays.
    void SetLanguage(const std::string& text) {
        if (voice_.description.language.empty()) voice_.description.language = LanguageCode(text);
    }

    /// Of a Piper voice, a text with a line "* License: ...".
    void ReadModelCard() {
        if (!voice_.description.licence.empty()) return;
        std::istringstream card(ReadPart(voice_.path / "MODEL_CARD", Part::Beginning, kLargestText));
        constexpr std::string_view kKey = "License:";
        constexpr std::size_t kLongest = 120;
        for (std::string line; std::getline(card, line);) {
            const auto at = line.find(kKey);
            const auto begin = at == line.npos ? at : line.find_first_not_of(" \t\r", at + kKey.size());
            if (begin == line.npos) continue;
            voice_.description.licence = Printable(line.substr(begin, kLongest));
            return;
        }
    }

    VoiceFolder& voice_;
    const std::vector<fs::path> files_;
};

/// Whether a folder holds an engine, which may be beside the voices.
bool HoldsPrograms(const fs::path& folder) {
    constexpr std::array<const char*, 6> kPrograms{"piper",   "bin/piper",  "libsherpa-onnx-c-api.so",
                                                   "phontab", "pyvenv.cfg", "lib/libsherpa-onnx-c-api.so"};
    return folder.filename() == "node_modules" ||
           std::any_of(kPrograms.begin(), kPrograms.end(),
                       [&](const char* name) { return !Existing(folder / name).empty(); });
}

}  // namespace

std::string NoteOfModel(std::string_view end, std::string_view key) {
    // A record of two fields, each with its length: one byte, or two for a value of 128 bytes and more.
    std::string begin = "\x0a";
    begin += static_cast<char>(key.size());
    begin += key;
    begin += '\x12';
    const auto at = end.rfind(begin);
    if (at == std::string_view::npos) return {};
    const std::string_view value = end.substr(at + begin.size());
    const std::size_t length = value.empty() ? 0 : static_cast<unsigned char>(value[0]);
    return length < 128 && length < value.size() ? Printable(std::string(value.substr(1, length))) : "";
}

std::string LanguageInName(std::string_view name) {
    const auto isLetter = [](char letter, char first) { return letter >= first && letter <= first + 25; };
    for (std::size_t at = 0; at + 2 <= name.size(); ++at) {
        if (at > 0 && name[at - 1] != '-' && name[at - 1] != '_') continue;
        const auto rest = name.substr(at);
        if (!isLetter(rest[0], 'a') || !isLetter(rest[1], 'a')) continue;
        if (at > 0 && (rest.size() == 2 || rest[2] == '-')) return std::string(rest.substr(0, 2));
        if (rest.size() >= 5 && rest[2] == '_' && isLetter(rest[3], 'A') && isLetter(rest[4], 'A') &&
            (rest.size() == 5 || rest[5] == '-'))
            return LanguageCode(rest.substr(0, 5));
    }
    return {};
}

std::optional<VoiceFolder> ReadVoiceFolder(const fs::path& folder) {
    std::error_code failure;
    VoiceFolder voice;
    voice.path = folder;
    voice.name = folder.filename().string();
    if (voice.name.starts_with(".") || !fs::is_directory(folder, failure)) return {};
    FolderReader(voice).Read();
    if (voice.models.empty() && HoldsPrograms(folder)) return {};
    return voice;
}

}  // namespace sorakaze::speech
