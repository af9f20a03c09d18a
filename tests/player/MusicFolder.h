// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <stdlib.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/runtime/sound/SoundFileWriter.h"

namespace sorakaze::player {

/// A folder of a test's own, which goes with it.
class MusicFolder {
  public:
    MusicFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "player_test_XXXXXX").string();
        path_ = ::mkdtemp(pattern.data());
    }
    ~MusicFolder() {
        std::error_code ignored;
        std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(path_, ignored);
    }
    MusicFolder(const MusicFolder&) = delete;
    MusicFolder& operator=(const MusicFolder&) = delete;

    std::filesystem::path operator/(const std::filesystem::path& name) const { return path_ / name; }
    const std::filesystem::path& Path() const { return path_; }

    std::filesystem::path Write(const std::filesystem::path& name, std::string_view bytes = {}) const {
        const std::filesystem::path file = path_ / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
        return file;
    }

    /// A tone in the format of the name's ending.
    std::filesystem::path WriteTone(const std::filesystem::path& name, double seconds = 0.2,
                                    float level = 0.25F) const {
        const std::filesystem::path file = path_ / name;
        std::filesystem::create_directories(file.parent_path());
        std::vector<float> samples(static_cast<std::size_t>(seconds * sound::kSampleRate) * sound::kChannels);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            samples[i] = level * static_cast<float>(std::sin(static_cast<double>(i / 2) * 0.06));
        }
        const auto writer = sound::SoundFileWriter::Create(file);
        writer->Write(samples);
        writer->Finish();
        return file;
    }

  private:
    std::filesystem::path path_;
};

}  // namespace sorakaze::player
