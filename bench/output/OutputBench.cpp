// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Plays an MP3 on the loudspeaker for twenty seconds and tells what ran dry: the device's gaps and the
// decoder's.
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "app/output/Loudspeaker.h"
#include "sound/encoding/SoundFileWriter.h"

namespace {

using namespace sorakaze;

constexpr int kSeconds = 20;

void WriteTone(const std::filesystem::path& file) {
    std::vector<float> samples(static_cast<std::size_t>(kSeconds + 5) * sound::kSampleRate *
                               sound::kChannels);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = 0.05f * static_cast<float>(std::sin(0.03 * static_cast<double>(i / sound::kChannels)));
    }
    const auto writer = sound::SoundFileWriter::Create(file);
    writer->Write(samples);
    writer->Finish();
}

}  // namespace

int main() {
    const auto file = std::filesystem::temp_directory_path() /
                      ("sorakaze-output-bench-" + std::to_string(getpid()) + ".mp3");
    WriteTone(file);
    sound::MixingEngine engine(sound::MixingMode::RealTime);
    const auto voice = engine.Open(file);
    std::filesystem::remove(file);
    if (!voice) return 1;
    const output::Loudspeaker loudspeaker(engine);
    voice->Start();
    std::this_thread::sleep_for(std::chrono::seconds(kSeconds));
    std::printf("%s: %.2f s of the file played in %d s, %llu underruns\n", loudspeaker.Description().c_str(),
                voice->Position().Seconds(), kSeconds,
                static_cast<unsigned long long>(loudspeaker.Underruns()));
    return 0;
}
