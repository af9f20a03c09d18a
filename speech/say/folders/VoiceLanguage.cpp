// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/folders/VoiceLanguage.h"

#include <algorithm>
#include <set>
#include <system_error>
#include <utility>

#include "speech/say/VoiceNames.h"

namespace sorakaze::speech {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostFolders = 1000;

std::vector<fs::path> FoldersIn(const fs::path& place) {
    std::vector<fs::path> folders;
    std::error_code failure;
    for (fs::directory_iterator entry(place, failure), end;
         !failure && entry != end && folders.size() < kMostFolders; entry.increment(failure))
        folders.push_back(entry->path());
    std::sort(folders.begin(), folders.end());
    return folders;
}

}  // namespace

std::vector<VoiceFolder> AllVoiceFolders(const std::vector<fs::path>& places) {
    std::vector<VoiceFolder> voices;
    std::set<std::string> names;
    for (const fs::path& place : places)
        for (const fs::path& folder : FoldersIn(place))
            if (auto voice = ReadVoiceFolder(folder); voice && names.insert(FoldName(voice->name)).second)
                voices.push_back(std::move(*voice));
    return voices;
}

std::optional<VoiceFolder> FindVoiceFolder(const std::vector<fs::path>& places, const std::string& name) {
    const std::string folded = FoldName(name);
    const auto isNamed = [&](const std::string& one) { return FoldName(one) == folded; };
    // Most often the folder's own name is meant, so that the others needn't be read.
    for (const fs::path& place : places)
        for (const fs::path& folder : FoldersIn(place))
            if (isNamed(folder.filename().string()))
                if (auto voice = ReadVoiceFolder(folder)) return voice;
    for (VoiceFolder& voice : AllVoiceFolders(places))
        if (std::any_of(voice.description.names.begin(), voice.description.names.end(), isNamed))
            return std::move(voice);
    return {};
}

std::string LanguageOf(const VoiceFolder& voice) {
    if (!voice.description.language.empty()) return voice.description.language;
    const auto person = FindFirstName(FoldName(voice.name));
    return person ? LanguageOfVoice(person->voice) : "en";
}

std::string LanguageOfVoiceNamed(const std::string& name, const std::vector<fs::path>& places) {
    if (const auto voice = FindVoiceFolder(places, name)) return LanguageOf(*voice);
    const std::string plain = name.substr(0, name.find('+'));
    if (const auto person = FindFirstName(FoldName(plain))) return LanguageOfVoice(person->voice);
    const std::string code = LanguageCode(plain);
    return code.empty() ? "en" : code;
}

}  // namespace sorakaze::speech
