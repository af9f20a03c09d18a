// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/output/Playback.h"

#include <algorithm>
#include <thread>

namespace sorakaze::output {
namespace {

constexpr std::uint32_t kSwell = sound::kSampleRate / 50;
constexpr std::uint32_t kFade = sound::kSampleRate / 10;
/// A sound server takes several buffers at once now and then; only what is clearly later than that has been
/// heard.
constexpr auto kSlack = std::chrono::milliseconds(20);

}  // namespace

void Playback::Render(std::span<float> interleaved) noexcept {
    beats_.fetch_add(1, std::memory_order_relaxed);
    Turn expected = Turn::Device;
    if (!turn_.compare_exchange_strong(expected, Turn::DeviceMixing, std::memory_order_acquire)) {
        std::fill(interleaved.begin(), interleaved.end(), 0.0f);
        return;
    }
    WatchForGap(interleaved.size() / sound::kChannels);
    engine_.Mix(interleaved);
    Scale(interleaved);
    turn_.store(Turn::Device, std::memory_order_release);
}

void Playback::WatchForGap(std::size_t frames) {
    const auto now = Clock::now();
    const std::chrono::duration<double> twoBuffers(2.0 * static_cast<double>(lastFrames_) /
                                                   sound::kSampleRate);
    if (lastBeat_ != Clock::time_point{} && now - lastBeat_ > twoBuffers + kSlack)
        gaps_.fetch_add(1, std::memory_order_relaxed);
    lastBeat_ = now;
    lastFrames_ = frames;
}

void Playback::Scale(std::span<float> interleaved) {
    if (fading_.load(std::memory_order_relaxed) && !closing_) {
        closing_ = true;
        gain_.MoveTo(0.0f, kFade);
    }
    if (!gain_.IsMoving() && gain_.Target() == 1.0f) return;
    const std::size_t frames = interleaved.size() / sound::kChannels;
    const std::size_t moving = std::min(frames, gain_.Remaining());
    for (std::size_t i = 0; i < frames; ++i) {
        const float gain = i < moving ? gain_.At(static_cast<std::uint32_t>(i)) : gain_.Target();
        for (int channel = 0; channel < sound::kChannels; ++channel)
            *(interleaved.data() + i * sound::kChannels + channel) *= gain;
    }
    gain_.Pass(moving);
    if (closing_ && !gain_.IsMoving()) faded_.store(true, std::memory_order_relaxed);
}

void Playback::GiveToDevice() {
    gain_.Jump(0.0f);
    gain_.MoveTo(1.0f, kSwell);
    closing_ = false;
    lastBeat_ = {};
    turn_.store(Turn::Device, std::memory_order_release);
}

void Playback::TakeFromDevice() {
    for (;;) {
        Turn expected = Turn::Device;
        if (turn_.compare_exchange_strong(expected, Turn::Control, std::memory_order_acquire)) return;
        if (expected == Turn::Control) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

}  // namespace sorakaze::output
