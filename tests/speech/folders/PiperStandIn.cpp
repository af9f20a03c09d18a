// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Keeps Piper's contract on the command line: options, a line on standard input, a WAV file or raw samples
// out. The model's content says what it does besides.
#include <sndfile.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

std::vector<std::int16_t> Tone(std::size_t length, double amplitude) {
    std::vector<std::int16_t> samples(length);
    for (std::size_t i = 0; i < length; ++i)
        samples[i] = static_cast<std::int16_t>(amplitude * std::sin(static_cast<double>(i) * 0.06));
    return samples;
}

void Misbehave(const std::string& what) {
    if (what == "hang") {
        if (fork() == 0) setsid();
        for (;;) pause();
    }
    if (what == "crash") std::raise(SIGKILL);
    for (int i = 0; what == "fork" && i < 5; ++i) fork();
    while (what == "fork") pause();
    const std::string block(1 << 20, 'x');
    for (int i = 0; what == "gigabyte" && i < 1024; ++i) std::cout << block;
    if (what == "fail") std::cerr << "RuntimeError: no such voice\n";
    if (what == "fail") std::exit(1);
}

}  // namespace

int main(int argc, char** argv) {
    std::map<std::string, std::string> options;
    for (int i = 1; i < argc; ++i) {
        const bool isRaw = std::strcmp(argv[i], "--output_raw") == 0;
        options[argv[i]] = isRaw || i + 1 == argc ? "" : argv[i + 1];
        if (!isRaw) ++i;
    }
    std::string what, line;
    std::ifstream(options.at("--model")) >> what;
    std::getline(std::cin, line);
    Misbehave(what);
    if (line.empty() || line.find("[[") != std::string::npos || !std::ifstream(options.at("--config")))
        return 3;
    auto length = static_cast<std::size_t>(static_cast<double>(line.size()) * 1000 *
                                           std::stod(options.at("--length_scale")));
    // As models that sample their noise: each time another length.
    if (what == "noise") length += std::random_device()() % 100'000;
    const auto samples = Tone(length, what == "silence" ? 0 : 8000);
    const auto count = static_cast<std::streamsize>(samples.size() * sizeof samples[0]);
    if (options.contains("--output_raw")) {
        std::cout.write(reinterpret_cast<const char*>(samples.data()), count);
        return 0;
    }
    if (what == "raw") return 0;
    SF_INFO info{};
    info.samplerate = 22'050;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* const file = sf_open(options.at("--output_file").c_str(), SFM_WRITE, &info);
    sf_write_short(file, samples.data(), static_cast<sf_count_t>(samples.size()));
    return sf_close(file);
}
