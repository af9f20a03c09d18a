// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/desk/Levels.h"

#include <chrono>
#include <utility>

namespace sorakaze::sound {
namespace {

using namespace std::chrono_literals;

/// The show plays effects at a volume of 70 percent. They are brought to the target at that volume.
constexpr double kRaiseOfEffects = 3.1;
/// Hardly a sentence or a jingle is longer: of those that are, the beginning counts.
constexpr Frames kShortSound{std::int64_t{20} * kSampleRate};
/// On the air a sentence or a jingle isn't held up for longer.
constexpr std::chrono::milliseconds kLongestHoldUp{400};
/// A render waits for a measurement that long. On the air nobody waits for one of music.
constexpr auto kLongestWait = 10min;

}  // namespace

DecodeOptions OptionsFor(Bus bus) {
    return {.skipHead = bus == Bus::Music, .fullFold = true, .excerpt = {}};
}

namespace {

DecodeOptions OptionsOf(const SoundSource& music) {
    DecodeOptions options = OptionsFor(Bus::Music);
    options.excerpt = music.excerpt;
    return options;
}

}  // namespace

Levels::Levels(double target, std::shared_ptr<Decoders> decoders, MixingMode mode)
    : target_(target),
      mode_(mode),
      measurements_(std::move(decoders), mode == MixingMode::Offline ? Decoders::Priority::Normal
                                                                     : Decoders::Priority::Background) {}

VoiceLevel Levels::LevelBy(const Measurement& measurement, Frames part, Bus bus) const {
    VoiceLevel level;
    level.plan = PlanLevel(measurement, part, target_, bus);
    if (measurement.seconds.empty()) return level;
    if (bus == Bus::Effects) level.plan.gainDb += kRaiseOfEffects;
    level.source = VoiceLevel::Source::Measured;
    level.isWhole = measurement.isWhole;
    level.loudness = LoudnessOfPart(measurement, part);
    level.speechBand = static_cast<double>(measurement.speechBand);
    return level;
}

Frames Levels::MeasuredInRing(Bus bus, Frames part) const {
    if (bus != Bus::Music) return kShortSound;
    // On the air nobody waits until so much is decoded.
    return mode_ == MixingMode::Offline && part <= Decoders::kMostMeasuredInRing ? part : Frames{};
}

VoiceLevel Levels::LevelOfShortSound(const std::filesystem::path& file, DecodedSound& sound, Bus bus) {
    auto measurement =
        mode_ == MixingMode::RealTime ? sound.AwaitMeasurement(kLongestHoldUp) : sound.AwaitMeasurement();
    if (!measurement && mode_ == MixingMode::Offline)
        measurement = measurements_.MeasureNow(file, OptionsFor(bus), kShortSound);
    if (measurement) return LevelBy(*measurement, kShortSound, bus);
    VoiceLevel level;
    level.isLost = true;
    return level;
}

void Levels::Want(const SoundSource& source, Frames part) {
    if (MeasuredInRing(Bus::Music, part).count == 0) measurements_.Want(source.file, part, OptionsOf(source));
}

VoiceLevel Levels::LevelOfMusic(const SoundSource& source, Frames part, std::optional<double> tagged,
                                const std::optional<Measurement>& measured) {
    if (measured) return LevelBy(*measured, part, Bus::Music);
    if (mode_ == MixingMode::Offline) measurements_.Want(source.file, part, OptionsOf(source));
    const auto measurement = mode_ == MixingMode::Offline
                                 ? measurements_.Await(source.file, part, OptionsOf(source), kLongestWait)
                                 : measurements_.Find(source.file, OptionsOf(source));
    if (measurement) return LevelBy(*measurement, part, Bus::Music);
    VoiceLevel level;
    level.isLost = mode_ == MixingMode::Offline || measurements_.IsLost(source.file, OptionsOf(source));
    if (tagged) {
        level.source = VoiceLevel::Source::Tags;
        level.loudness = *tagged;
        level.plan.gainDb = GainFromTags(*tagged, target_);
    }
    return level;
}

}  // namespace sorakaze::sound
