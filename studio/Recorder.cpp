// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/Recorder.h"

#include <algorithm>
#include <exception>
#include <span>

#include "app/runtime/Clock.h"
#include "studio/StudioError.h"

namespace sorakaze::studio {
namespace {

constexpr std::size_t kFramesPerTick = sound::kSampleRate / kTicksPerSecond;
constexpr std::size_t kSamplesPerTick = kFramesPerTick * sound::kChannels;
/// The writer is given this many ticks of sound at once.
constexpr std::size_t kTicksPerBlock = 16;

}  // namespace

void Recorder::Begin(const std::filesystem::path& file, Metering metering) {
    if (metering == Metering::On) meter_ = std::make_shared<sound::OutputMeter>();
    // The bare mix of 16-bit sounds needs no dither: it comes out as it was.
    const auto dither = engine_.HasDesk() ? sound::Dither::Triangular : sound::Dither::None;
    if (!file.empty()) writer_ = sound::SoundFileWriter::Create(file, dither, meter_);
    block_.reserve(kTicksPerBlock * kSamplesPerTick);
}

void Recorder::MixTick() {
    ++ticks_;
    if (notesSilence_) {
        block_.resize(kSamplesPerTick);  // not touched
        engine_.Mix(block_);
        return NoteSilence();
    }
    block_.resize(block_.size() + kSamplesPerTick);
    engine_.Mix(std::span(block_).last(kSamplesPerTick));
    if (block_.size() >= kTicksPerBlock * kSamplesPerTick) WriteBlock();
}

void Recorder::NoteSilence() {
    if (engine_.Sounding() > 0) return;
    if (silences_.empty() || silences_.back().end != ticks_ - 1) silences_.push_back({ticks_ - 1, ticks_});
    silences_.back().end = ticks_;
}

void Recorder::Finish() {
    WriteBlock();
    if (!error_.empty()) throw StudioError(kFailed, error_);
    if (writer_) writer_->Finish();
}

void Recorder::WriteBlock() {
    std::span<const float> sound(block_);
    const auto frames = static_cast<std::int64_t>(sound.size() / sound::kChannels);
    const std::int64_t toSkip = std::min(frames, engine_.Latency().count - skipped_);
    skipped_ += toSkip;
    sound = sound.subspan(static_cast<std::size_t>(toSkip) * sound::kChannels);
    try {
        if (writer_ && error_.empty() && !sound.empty()) writer_->Write(sound);
    } catch (const std::exception& error) {
        error_ = error.what();
    }
    block_.clear();
}

}  // namespace sorakaze::studio
