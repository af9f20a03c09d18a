// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/voices/SoundFile.h"

#include <sndfile.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <memory>
#include <stdexcept>

#include "speech/say/ScratchFile.h"

namespace sorakaze::speech {

SoundFile::SoundFile(const std::filesystem::path& folder) : descriptor_(MakeScratchFile(folder, name_)) {
    if (!descriptor_) throw std::runtime_error("there is no folder for its sound");
}

SoundFile::~SoundFile() {
    ::unlink(name_.c_str());
}

bool SoundFile::Pass(const SpeechSink& sink, double size) const {
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> sound(sf_open(name_.c_str(), SFM_READ, &info),
                                                            sf_close);
    if (!sound || info.channels != 1) return false;
    const auto rate = static_cast<int>(std::lround(info.samplerate * size));
    bool passed = false;
    std::array<std::int16_t, 4096> block;
    for (sf_count_t read = 0; (read = sf_read_short(sound.get(), block.data(), block.size())) > 0;
         passed = true)
        sink(rate, std::span(block).first(static_cast<std::size_t>(read)), BlockStart::WithinWord);
    return passed;
}

}  // namespace sorakaze::speech
