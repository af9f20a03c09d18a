// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/sound/DamagedFiles.h"

#include <array>
#include <cmath>
#include <sstream>

#include "player/Tags.h"

namespace sorakaze::sound::testing {
namespace {

constexpr std::int64_t kBlock = 800;

/// A sample that a device must never get, if there is one.
const float* FirstInsane(std::span<const float> samples) {
    for (const float& sample : samples)
        if (!(std::fabs(sample) <= 1.0f)) return &sample;
    return nullptr;
}

}  // namespace

DamagedFiles::DamagedFiles(std::shared_ptr<Decoders> decoders, std::filesystem::path good)
    : good_(std::move(good)), offline_(Reading::Offline, decoders), realTime_(Reading::RealTime, decoders) {}

std::string DamagedFiles::Mix(MixingEngine& engine, Voice& voice, std::int64_t frames) {
    std::array<float, kBlock * kChannels> block;
    std::int64_t position = 0;
    for (; frames > 0 && voice.IsPlaying(); frames -= kBlock) {
        engine.Mix(block);
        if (const float* const sample = FirstInsane(block)) return "a sample is " + std::to_string(*sample);
        const std::int64_t now = voice.Position().count;
        if (now < position || now > position + kBlock) return "the position jumps";
        position = now;
    }
    return {};
}

/// What came before must not disturb what comes now.
std::string DamagedFiles::PlayGood(MixingEngine& engine) {
    auto voice = engine.Open(good_);
    if (!voice) return "a good file isn't opened any more";
    voice->Start();
    std::string wrong = Mix(engine, *voice, kSampleRate / 10);
    if (wrong.empty() && voice->Position().count != kSampleRate / 10)
        wrong = "a good file isn't played any more";
    voice.reset();
    return wrong.empty() ? MixRest(engine) : wrong;
}

/// A voice that was dropped is let go of by the mixing that fades it.
std::string DamagedFiles::MixRest(MixingEngine& engine) {
    std::array<float, kBlock * kChannels> rest;
    engine.Mix(rest);
    return FirstInsane(rest) ? "the end isn't sane" : "";
}

std::string DamagedFiles::TakeFailures(MixingEngine& engine, const std::filesystem::path& file) {
    const auto failures = engine.TakeFailures();
    // One decoder read the tags, one was to play it.
    if (failures.size() > 2) return "more failures than decoders";
    for (const DecoderFailure& failure : failures) {
        if (failure.file != file) return "a failure of " + failure.file.string() + ": " + failure.why;
        if (failure.why.ends_with("status 99")) return "a sanitizer ended the decoder";
        lastFailure_ = failure.why;
        ++failures_[failure.why];
    }
    return {};
}

std::string DamagedFiles::Play(const std::filesystem::path& file, std::uint64_t number) {
    constexpr std::int64_t kMost = std::int64_t{5} * kSampleRate;
    MixingEngine& engine = number % 4 == 0 ? realTime_ : offline_;
    if (!before_) {
        if (auto wrong = PlayGood(offline_); !wrong.empty()) return wrong;
        before_ = Traces::Now();
    }
    lastFailure_.clear();
    player::ReadTags(engine, file);
    if (const auto voice = engine.Open(file)) {
        ++played_;
        if (number % 7 != 0) voice->Start();
        const bool whole = number % 3 == 0;
        const auto most = whole ? kMost : static_cast<std::int64_t>(number * 977 % (kSampleRate / 2));
        if (auto wrong = Mix(engine, *voice, most); !wrong.empty()) return wrong;
    }
    if (auto wrong = MixRest(engine); !wrong.empty()) return wrong;
    if (auto wrong = TakeFailures(engine, file); !wrong.empty()) return wrong;
    engine.ForgetBadFiles();
    return number % 16 == 0 ? PlayGood(offline_) : std::string();
}

std::string DamagedFiles::CheckTraces() {
    if (!before_) return "nothing was played";
    before_->workers = before_->rings = 0;
    const Traces after = Traces::Settled(*before_);
    if (after.descriptors <= before_->descriptors && after.children <= before_->children &&
        after.workers == 0 && after.rings == 0)
        return PlayGood(offline_);
    std::ostringstream text;
    text << "left over: " << after << "; before: " << *before_;
    return text.str();
}

}  // namespace sorakaze::sound::testing
