// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/voices/OpenJTalk.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <stdexcept>

#include "speech/say/voices/BoundedChild.h"
#include "speech/say/voices/SoundFile.h"

namespace sorakaze::speech {
namespace {

namespace fs = std::filesystem;

/// Bytes. The program reads one line of less than 1024.
constexpr std::size_t kLongestChunk = 900;

struct Speaker {
    std::string_view name;
    bool female;
    int semitones;
};

constexpr Speaker kSpeakers[] = {{"kyoko", true, 0},  {"haruka", true, 1}, {"sakura", true, 3},
                                 {"ayumi", true, -2}, {"otoya", false, 0}, {"hattori", false, -2},
                                 {"ichiro", false, 2}};

/// A man's voice is raised by this to replace a woman's, and the other way round lowered.
constexpr int kSemitonesBetweenSexes = 7;

/// By the voice's file name: "nitech_jp_atr503_m001", "tohoku-f01", "mei_normal".
bool IsMaleVoice(const fs::path& voice) {
    const std::string name = voice.stem().string();
    for (std::size_t at = 0; (at = name.find('m', at)) != std::string::npos; ++at) {
        const bool begins = at == 0 || name[at - 1] == '_' || name[at - 1] == '-';
        const bool numbered = at + 1 < name.size() && name[at + 1] >= '0' && name[at + 1] <= '9';
        if (begins && (numbered || name.compare(at, 4, "male") == 0)) return true;
    }
    return false;
}

std::vector<fs::path> FindVoices(const fs::path& folder) {
    std::vector<fs::path> voices;
    std::error_code failure;
    for (auto entry = fs::recursive_directory_iterator(folder, failure);
         !failure && entry != fs::recursive_directory_iterator(); entry.increment(failure)) {
        if (entry->path().extension() == ".htsvoice") voices.push_back(entry->path());
    }
    std::sort(voices.begin(), voices.end());
    return voices;
}

constexpr std::chrono::seconds kLongest{12};

}  // namespace

std::optional<OpenJTalkVoice> FindOpenJTalk(const OpenJTalkPaths& places, std::string_view speaker,
                                            double speed) {
    if (access(places.program.c_str(), X_OK) != 0 || !fs::exists(places.dictionary / "sys.dic")) return {};
    const auto voices = FindVoices(places.voices);
    if (voices.empty()) return {};
    const auto* known = std::find_if(std::begin(kSpeakers), std::end(kSpeakers),
                                     [&](const Speaker& one) { return one.name == speaker; });
    const Speaker& wanted = known == std::end(kSpeakers) ? kSpeakers[0] : *known;
    const auto fitting = std::find_if(voices.begin(), voices.end(), [&](const fs::path& voice) {
        return IsMaleVoice(voice) != wanted.female;
    });
    OpenJTalkVoice found{places, fitting == voices.end() ? voices.front() : *fitting, wanted.semitones,
                         speed};
    if (fitting == voices.end())
        found.semitones += wanted.female ? kSemitonesBetweenSexes : -kSemitonesBetweenSexes;
    return found;
}

std::vector<std::string_view> Chunks(std::string_view text) {
    constexpr std::array<std::string_view, 6> kEnds = {"。", "！", "？", "! ", "? ", "、"};
    std::vector<std::string_view> chunks;
    while (text.size() > kLongestChunk) {
        std::size_t end = 0;
        for (const std::string_view mark : kEnds) {
            // A comma only if there is nothing better.
            if (mark == "、" && end > 0) break;
            const auto found = text.rfind(mark, kLongestChunk - mark.size());
            if (found != std::string_view::npos) end = std::max(end, found + mark.size());
        }
        if (end == 0) {
            end = kLongestChunk;
            while (end > 1 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
        }
        chunks.push_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    if (text.find_first_not_of(' ') != std::string_view::npos) chunks.push_back(text);
    return chunks;
}

void SpeakOpenJTalk(const OpenJTalkVoice& voice, std::string_view text, const fs::path& folder,
                    const SpeechSink& sink) {
    char speed[16];
    std::snprintf(speed, sizeof speed, "%.2f", voice.speed);
    const ChildBounds bounds{std::chrono::steady_clock::now() + kLongest};
    for (const std::string_view chunk : Chunks(text)) {
        const SoundFile output(folder);
        try {
            RunChild({voice.places.program, "-x", voice.places.dictionary, "-m", voice.voice, "-ow",
                      output.Name(), "-r", speed, "-fm", std::to_string(voice.semitones)},
                     std::string(chunk) + '\n', bounds, [](std::string_view) {});
        } catch (const ChildFailure& failure) {
            throw std::runtime_error(std::string("open_jtalk: ") + failure.what());
        }
        if (!output.Pass(sink)) throw std::runtime_error("open_jtalk made no sound");
    }
}

}  // namespace sorakaze::speech
