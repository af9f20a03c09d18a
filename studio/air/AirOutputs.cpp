// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "studio/air/AirOutputs.h"

#include <utility>

#include "studio/StudioError.h"

namespace sorakaze::studio {
namespace {

/// A device may take so long to begin.
constexpr auto kDeviceTimeout = std::chrono::seconds(5);

}  // namespace

AirOutputs::AirOutputs(sound::MixingEngine& engine, const AirTargets& targets) {
    for (const auto& file : targets.files) {
        try {
            recordings_.push_back(std::make_unique<LiveRecording>(engine, file));
        } catch (const sound::SoundFileError& error) {
            news_.emplace_back(error.what());
        }
    }
    if (recordings_.empty() && !targets.device)
        throw StudioError(kFailed, news_.empty() ? "There is nowhere to send the sound." : news_.back());
    if (targets.device)
        loudspeaker_ = std::make_unique<output::Loudspeaker>(engine);
    else
        silent_ = std::make_unique<SilentOutput>(engine);
}

std::vector<std::string> AirOutputs::TakeNews() {
    CheckDevice();
    for (const auto& recording : recordings_) {
        if (std::string trouble = recording->TakeTrouble(); !trouble.empty())
            news_.push_back(std::move(trouble));
    }
    return std::exchange(news_, {});
}

void AirOutputs::CheckDevice() {
    if (!loudspeaker_ || loudspeaker_->IsAudible() == audible_) return;
    if (audible_ && std::chrono::steady_clock::now() - begin_ < kDeviceTimeout) return;
    audible_ = !audible_;
    news_.push_back(audible_ ? "The sound device plays: " + loudspeaker_->Description() + "."
                             : "Nothing is heard here (" + loudspeaker_->Description() +
                                   "). The show goes on, and a device is looked for.");
}

std::vector<std::string> AirOutputs::Finish() {
    // First what is heard: its end fades.
    loudspeaker_.reset();
    silent_.reset();
    std::vector<std::string> complaints;
    for (const auto& recording : recordings_) {
        if (std::string complaint = recording->Finish(); !complaint.empty())
            complaints.push_back(std::move(complaint));
    }
    recordings_.clear();
    return complaints;
}

}  // namespace sorakaze::studio
