// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/folders/PiperProgram.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string_view>

namespace sorakaze::speech {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPiece = 1 << 20;
constexpr std::uintmax_t kLargestProgram = 256u << 20;

/// Whether the file's bytes hold all of the words.
bool Holds(const fs::path& file, std::vector<std::string_view> words) {
    std::error_code failure;
    if (!fs::is_regular_file(file, failure) || fs::file_size(file, failure) > kLargestProgram) return false;
    std::ifstream stream(file, std::ios::binary);
    constexpr std::size_t kOverlap = 64;  // more than a word is long
    std::string bytes;
    while (!words.empty() && stream) {
        bytes.erase(0, bytes.size() - std::min(bytes.size(), kOverlap));
        const std::size_t kept = bytes.size();
        bytes.resize(kept + kPiece);
        stream.read(bytes.data() + kept, kPiece);
        bytes.resize(kept + static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
        std::erase_if(words, [&](std::string_view word) { return bytes.find(word) != std::string::npos; });
    }
    return words.empty();
}

/// The module's own main file parses the options that are used here.
bool IsPiperModule(const fs::path& folder) {
    return Holds(folder / "__main__.py", {"PiperVoice", "--output_file", "--model"});
}

/// A Python installation's folders for modules, below `prefix`.
bool HasPiperModule(const fs::path& prefix) {
    if (IsPiperModule(prefix / "lib/python3/dist-packages/piper")) return true;
    std::error_code failure;
    for (fs::directory_iterator entry(prefix / "lib", failure), end; !failure && entry != end;
         entry.increment(failure)) {
        if (!entry->path().filename().string().starts_with("python3")) continue;
        for (const char* name : {"site-packages", "dist-packages"})
            if (IsPiperModule(entry->path() / name / "piper")) return true;
    }
    return false;
}

bool CanRun(const fs::path& file) {
    std::error_code failure;
    return fs::is_regular_file(file, failure) && ::access(file.c_str(), X_OK) == 0;
}

/// The program in one folder, if it is Piper.
PiperProgram ProgramIn(const fs::path& folder) {
    const fs::path file = folder / "piper";
    std::error_code failure;
    if (!CanRun(file)) return {};
    const bool isScript = Holds(file, {"piper.__main__"});
    if (isScript && HasPiperModule(folder.parent_path())) return {{file.string()}, {}};
    if (isScript || !Holds(file, {"--output_file", "--length_scale"})) return {};
    const fs::path data = folder / "espeak-ng-data";
    const bool takesData = fs::is_directory(data, failure) && Holds(file, {"--espeak_data"});
    return {{file.string()}, takesData ? data : fs::path()};
}

/// A Python with the module. -I keeps the working folder and the user's own modules out.
PiperProgram ModuleOf(const fs::path& prefix, const fs::path& python) {
    if (!CanRun(python) || !HasPiperModule(prefix)) return {};
    return {{python.string(), "-I", "-m", "piper"}, {}};
}

}  // namespace

PiperProgram FindPiper(const std::vector<fs::path>& places) {
    for (const fs::path& place : places) {
        for (const char* below :
             {"", "piper", "bin", "piper/bin", "venv", ".venv", "venv/bin", ".venv/bin"}) {
            const fs::path folder = *below ? place / below : place;
            for (PiperProgram found : {ProgramIn(folder), ModuleOf(folder, folder / "bin/python3")})
                if (!found.words.empty()) return found;
        }
    }
    for (const char* folder : {"/usr/local/bin", "/usr/bin"})
        if (PiperProgram found = ProgramIn(folder); !found.words.empty()) return found;
    for (const char* prefix : {"/usr/local", "/usr"})
        if (PiperProgram found = ModuleOf(prefix, "/usr/bin/python3"); !found.words.empty()) return found;
    return {};
}

}  // namespace sorakaze::speech
