// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/OpenJTalk.h"

#include <fcntl.h>
#include <sndfile.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <stdexcept>

#include "speech/say/ScratchFile.h"

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

/// A file that is removed at the end of its scope.
class ScratchFile {
  public:
    explicit ScratchFile(const fs::path& folder) : descriptor_(MakeScratchFile(folder, name_)) {
        if (descriptor_ < 0) throw std::runtime_error("can't write in " + folder.string());
    }
    ~ScratchFile() {
        close(descriptor_);
        unlink(name_.c_str());
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& Name() const { return name_; }
    int Descriptor() const { return descriptor_; }

  private:
    std::string name_;
    int descriptor_;
};

/// Runs the program with `input` as its standard input; its exit status.
int RunProgram(std::vector<std::string> words, int input) {
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    pid_t child = -1;
    const int failure = posix_spawn(&child, words[0].c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) return -1;
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void PassSound(const std::string& file, const OpenJTalkSink& sink) {
    SF_INFO info{};
    SNDFILE* sound = sf_open(file.c_str(), SFM_READ, &info);
    if (!sound) throw std::runtime_error("open_jtalk made no sound");
    std::array<std::int16_t, 4096> block;
    while (info.channels == 1) {
        const sf_count_t read = sf_read_short(sound, block.data(), block.size());
        if (read <= 0) break;
        sink(info.samplerate, std::span(block).first(static_cast<std::size_t>(read)));
    }
    sf_close(sound);
}

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
                    const OpenJTalkSink& sink) {
    char speed[16];
    std::snprintf(speed, sizeof speed, "%.2f", voice.speed);
    for (const std::string_view chunk : Chunks(text)) {
        const ScratchFile input(folder), output(folder);
        const std::string line = std::string(chunk) + '\n';
        const bool written =
            write(input.Descriptor(), line.data(), line.size()) == static_cast<ssize_t>(line.size()) &&
            lseek(input.Descriptor(), 0, SEEK_SET) == 0;
        const int status =
            !written ? -1
                     : RunProgram({voice.places.program, "-x", voice.places.dictionary, "-m", voice.voice,
                                   "-ow", output.Name(), "-r", speed, "-fm", std::to_string(voice.semitones)},
                                  input.Descriptor());
        if (status != 0) throw std::runtime_error("open_jtalk failed");
        PassSound(output.Name(), sink);
    }
}

}  // namespace sorakaze::speech
