// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/desk/Lookahead.h"

#include <algorithm>

namespace sorakaze::sound {

void Lookahead::Follow(DecodedSound& sound, Frames position, MixingMode mode) {
    RingReader& ring = sound.Ring();
    const std::int64_t passed = origin_ < 0 ? -1 : (position.count - origin_) / kDeskStep;
    // What was not followed for a while is looked at anew.
    if (passed < begin_ || passed > end_) {
        origin_ = position.count;
        begin_ = end_ = 0;
        band_.Reset();
    } else {
        begin_ = static_cast<int>(passed);
    }
    // A decoder sleeps while more than half of its frames ahead are there.
    const std::size_t within = static_cast<std::size_t>(position.count - origin_) % kDeskStep;
    const auto most = static_cast<int>((ring.Ahead() / 2 - within) / kDeskStep);
    const int wanted = begin_ + std::min(kSteps, most);
    const auto offset = [&] {
        return static_cast<std::size_t>(origin_ + std::int64_t{end_} * kDeskStep - position.count);
    };
    if (mode == MixingMode::Offline && end_ < wanted)
        sound.WaitForFrames(
            static_cast<std::size_t>(origin_ + std::int64_t{wanted} * kDeskStep - position.count));
    while (end_ < wanted && Analyse(ring, offset())) ++end_;
}

/// False where the step isn't decoded yet or the sound is over.
bool Lookahead::Analyse(RingReader& ring, std::size_t offset) {
    const bool isFinished = ring.IsFinished();  // before the look at what there is
    const std::size_t filled = ring.Filled();
    if (filled <= offset || (filled - offset < kDeskStep && !isFinished)) return false;
    std::size_t copied = 0;  // samples
    while (copied < step_.size()) {
        const auto frames = ring.PeekAt(offset + copied / kChannels, (step_.size() - copied) / kChannels);
        if (frames.empty()) break;
        std::copy(frames.begin(), frames.end(), step_.begin() + static_cast<std::ptrdiff_t>(copied));
        copied += frames.size();
    }
    if (copied == 0) return false;
    std::fill(step_.begin() + static_cast<std::ptrdiff_t>(copied), step_.end(), 0.0f);
    constexpr double kGroups = static_cast<double>(kDeskStep) / SpeechBand::kGroup;
    powers_[static_cast<std::size_t>(end_) % kCapacity] = static_cast<float>(band_.Energy(step_) / kGroups);
    return true;
}

}  // namespace sorakaze::sound
