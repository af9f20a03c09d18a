// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "sound/encoding/SoundFileWriter.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze::player {

/// A folder of a test's own, which goes with it.
struct MusicFolder : test::TemporaryFolder {
    std::filesystem::path Write(const std::filesystem::path& name, const std::string& bytes = {}) const {
        return TemporaryFolder::Write(name, bytes);
    }

    /// A tone in the format of the name's ending.
    std::filesystem::path WriteTone(const std::filesystem::path& name, double seconds = 0.2,
                                    float level = 0.25F) const {
        std::vector<float> samples(static_cast<std::size_t>(seconds * sound::kSampleRate) * sound::kChannels);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i] = level * static_cast<float>(std::sin(static_cast<double>(i / 2) * 0.06));
        }
        const auto file = Path() / name;
        const auto writer = sound::SoundFileWriter::Create(file);
        writer->Write(samples);
        writer->Finish();
        return file;
    }
};

}  // namespace sorakaze::player
