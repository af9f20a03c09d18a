// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/output/OutputTesting.h"

#include <stdlib.h>

#include <chrono>
#include <cmath>
#include <fstream>
#include <thread>

#include "app/output/TrueTime.h"

namespace sorakaze::output::testing {

using Clock = std::chrono::steady_clock;

Variable::Variable(const char* name, const std::string& value) : name_(name) {
    if (const char* before = getenv(name)) before_ = before;
    setenv(name, value.c_str(), 1);
}

Variable::~Variable() {
    if (before_)
        setenv(name_, before_->c_str(), 1);
    else
        unsetenv(name_);
}

sound::testing::Samples ReadSamples(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    sound::testing::Samples samples;
    for (float sample; stream.read(reinterpret_cast<char*>(&sample), sizeof(sample));)
        samples.push_back(sample);
    return samples;
}

bool Eventually(const std::function<bool()>& happens) {
    const auto end = Clock::now() + std::chrono::seconds(30);
    while (!happens()) {
        if (Clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

bool MixesInTrueTime(const sound::MixingEngine& engine) {
    const auto first = engine.Mixed();
    if (!Eventually([&] { return engine.Mixed() > first; })) return false;
    const auto start = Clock::now();
    const auto before = engine.Mixed();
    // On a busy machine the mixing thread may be late at a given moment, but it doesn't stay behind.
    return Eventually([&] {
        const std::chrono::duration<double> elapsed = Clock::now() - start;
        const double due = elapsed.count() * sound::kSampleRate;
        const double mixed = static_cast<double>((engine.Mixed() - before).count);
        return elapsed.count() >= 2.0 && std::fabs(mixed - due) <= 2.0 * TrueTime::kBlock;
    });
}

}  // namespace sorakaze::output::testing
