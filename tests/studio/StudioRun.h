// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// A station made for a test, the real studio run on it, and what came of it.
#pragma once

#include <nlohmann/json.hpp>

#include "tests/sound/SoundTesting.h"
#include "tests/support/Program.h"

namespace sorakaze::test {

struct Outcome {
    int status = -1;
    std::string out;
    std::string error;
};

class StudioStation : public TemporaryFolder {
  public:
    /// A station with the real `say`, no music and a home folder of its own.
    StudioStation() {
        Deploy(R"("off")");
        std::filesystem::copy_file(SAY_PROGRAM, Path() / "Sorakaze.app/Contents/Resources/say");
        for (const char* folder : {"Programs", "Sounds", "Music", "home"})
            std::filesystem::create_directories(Path() / folder);
    }

    /// The encyclopaedia is left in peace. Without a desk sounds come out as they are.
    void Deploy(const std::string& loudness) const {
        Write("Sorakaze.app/Contents/Resources/deployment.json",
              R"({"encyclopaediaEnglish": "", "encyclopaediaJapanese": "", "loudness": )" + loudness + "}");
    }

    /// A sine of that amplitude, both channels.
    std::filesystem::path WriteTone(const std::string& name, double hertz, float amplitude,
                                    int seconds) const {
        auto file = Write(name, "");
        const auto frames = static_cast<std::size_t>(seconds * sound::kSampleRate);
        sound::testing::WriteSound(file, sound::testing::Sine(hertz, frames, amplitude));
        return file;
    }

    /// The command line after "sorakaze-studio", as the shell reads it.
    Outcome Run(const std::string& arguments, const std::string& before = "") const {
        // The home folder is the test's own, so that nobody's music gets into the library.
        const std::string line = "cd '" + Path().string() + "' && " + before +
                                 " env -u XDG_CONFIG_HOME HOME=\"$PWD/home\" " STUDIO_PROGRAM " " +
                                 arguments + " 2> stderr";
        const int status = Program({"/bin/sh", "-c", line}, Path() / "stdout").Wait();
        return {status, ReadBytes(Path() / "stdout"), ReadBytes(Path() / "stderr")};
    }
    /// `render` of the program "Show" to `output` with these further options.
    Outcome Render(const std::string& output, const std::string& more = "",
                   const std::string& before = "") const {
        return Run(
            "render --station . --program Show --seed 1 --trace trace.jsonl --output " + output + " " + more,
            before);
    }
    /// The value of `field` in the trace's lines about `what`.
    std::vector<std::string> Traced(const std::string& what, const std::string& field) const {
        std::vector<std::string> values;
        std::ifstream in(Path() / "trace.jsonl");
        for (std::string line; std::getline(in, line);) {
            const auto event = nlohmann::json::parse(line);
            if (event.at("what") != what) continue;
            const auto& value = event.at(field);
            values.push_back(value.is_string() ? value.get<std::string>() : value.dump());
        }
        return values;
    }
};

}  // namespace sorakaze::test
