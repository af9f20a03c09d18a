// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/output/Playback.h"

#include <algorithm>
#include <thread>

namespace sorakaze::output {
namespace {

constexpr std::uint32_t kFadeInFrames = sound::kSampleRate / 50;
constexpr std::uint32_t kFadeOutFrames = sound::kSampleRate / 10;
/// A sound server sometimes takes several buffers at once; only a clearly longer pause has been heard.
constexpr auto kCallbackJitter = std::chrono::milliseconds(20);

}  // namespace

void Playback::Render(std::span<float> interleaved) noexcept {
    callbackCount_.fetch_add(1, std::memory_order_relaxed);
    Turn expected = Turn::Device;
    if (!turn_.compare_exchange_strong(expected, Turn::DeviceMixing, std::memory_order_acquire)) {
        std::fill(interleaved.begin(), interleaved.end(), 0.0f);
        return;
    }
    CountGap(interleaved.size() / sound::kChannels);
    engine_.Mix(interleaved);
    Scale(interleaved);
    turn_.store(Turn::Device, std::memory_order_release);
}

void Playback::CountGap(std::size_t frames) {
    const auto now = Clock::now();
    const std::chrono::duration<double> twoBuffers(2.0 * static_cast<double>(lastFrames_) /
                                                   sound::kSampleRate);
    if (lastCallback_ != Clock::time_point{} && now - lastCallback_ > twoBuffers + kCallbackJitter)
        gaps_.fetch_add(1, std::memory_order_relaxed);
    lastCallback_ = now;
    lastFrames_ = frames;
}

void Playback::Scale(std::span<float> interleaved) {
    if (fading_.load(std::memory_order_relaxed) && !closing_) {
        closing_ = true;
        gain_.MoveTo(0.0f, kFadeOutFrames);
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
    gain_.MoveTo(1.0f, kFadeInFrames);
    closing_ = false;
    lastCallback_ = {};
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
