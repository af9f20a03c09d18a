// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/SoundCounter.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <tuple>
#include <utility>

#include "base/RegularFile.h"
#include "sound/MixingThread.h"
#include "sound/desk/Desk.h"
#include "sound/desk/LevelPlan.h"
#include "sound/desk/Levels.h"
#include "sound/desk/Lookahead.h"

namespace sorakaze::sound {
namespace {

/// A stated length may be wrong by so much, be it for silence at the head that isn't played.
constexpr Frames kDoubt{std::int64_t{15} * kSampleRate};

/// What there is to know of a sound that passes.
struct Course {
    std::optional<Frames> stated{};  ///< by the container
    Frames frames{};                 ///< that are heard
    bool endsEarly = false;          ///< the desk ends it there, which takes it one step more
    Frames leadIn{};                 ///< of speech: the silence before it, where music plays
};

/// How sounds are looked at; what was found stays known for the program's run.
class Look {
  public:
    Look(Decoders& decoders, std::optional<double> target, SoundSource source, Bus bus, Frames part)
        : decoders_(decoders), target_(target), source_(std::move(source)), bus_(bus), part_(part) {
        if (target_) options_ = OptionsFor(bus_);
        options_.excerpt = source_.excerpt;
    }

    std::optional<Course> Find(std::string* why) const {
        const auto file = OpenNonEmptyFile(source_.file);
        if (!file) {
            if (why) *why = WhyNotOpened(source_.file);
            return std::nullopt;
        }
        static std::mutex mutex;
        static std::map<std::tuple<FileIdentity, DecodeOptions, Bus, std::int64_t>, Course> known;
        const auto key = std::tuple(IdentityOf(*file), options_, bus_, part_.count);
        {
            const std::lock_guard lock(mutex);
            if (const auto found = known.find(key); found != known.end()) return found->second;
        }
        const auto course = Decode(why);
        const std::lock_guard lock(mutex);
        if (course) known.emplace(key, *course);
        return course;
    }

  private:
    std::optional<Course> Decode(std::string* why) const {
        const auto sound = decoders_.Open(source_.file, Decoders::Pace::Fast, options_, {}, why);
        if (!sound) return std::nullopt;
        Course course{.stated = sound->Length()};
        course.frames = course.stated.value_or(Frames{});
        const bool isAll = bus_ != Bus::Music || part_.count <= 0;
        if (isAll || !course.stated || *course.stated <= part_ + kDoubt) {
            const auto measured = decoders_.Measure(source_.file, isAll ? kLongestMeasurement : part_,
                                                    options_, Decoders::Priority::Normal);
            if (measured) Follow(*measured, course);
            if (measured && target_ && bus_ == Bus::Speech) course.leadIn = LeadIn(*sound, *measured);
        }
        decoders_.End(*sound);
        return course;
    }

    void Follow(const Measurement& measured, Course& course) const {
        course.frames = measured.isWhole ? measured.length : std::max(course.frames, part_ + kDoubt);
        if (!target_ || bus_ != Bus::Music) return;
        const auto end = PlanLevel(measured, part_, *target_, bus_).end;
        course.endsEarly = end && *end <= course.frames;
        if (course.endsEarly) course.frames = *end;
    }

    Frames LeadIn(DecodedSound& sound, const Measurement& measured) const {
        std::atomic_flag mixing;
        const MixingScope scope(mixing);
        Lookahead ahead;
        ahead.Follow(sound, {}, MixingMode::Offline);
        const double band = Desk::SpeechBandOf(measured, *target_);
        const int steps = Ducker::LeadIn({.stepsToWord = Desk::StepsToWord(ahead, band), .isBedThere = true});
        return {std::int64_t{steps} * kDeskStep};
    }

    Decoders& decoders_;
    const std::optional<double> target_;
    const SoundSource source_;
    const Bus bus_;
    const Frames part_;
    DecodeOptions options_;
};

}  // namespace

class CountedVoice final : public Voice {
  public:
    CountedVoice(Bus bus, const Course& course) : bus_(bus), course_(course) {}

    void Start() override {
        State opened = State::Opened;
        state_.compare_exchange_strong(opened, State::Playing);
    }
    void Stop() override { state_.store(State::Over); }
    bool IsPlaying() const override { return state_.load() == State::Playing; }
    void SetGain(float /*gain*/, Frames /*ramp*/) override {}
    void FadeOut(Frames /*frames*/) override {}
    std::optional<VoiceLevel> Level() const override { return std::nullopt; }
    void SetLevel(const VoiceLevel& /*level*/) override {}
    std::optional<Measurement> AwaitMeasurement() override { return std::nullopt; }
    void EndAt(Frames /*end*/, Frames /*fade*/) override {}
    Frames Position() const override { return {position_.load()}; }
    std::optional<Frames> Length() const override { return course_.stated; }

    Bus GetBus() const { return bus_; }
    /// `hasBed`: music or an effect plays.
    void Pass(Frames frames, bool hasBed) {
        if (!IsPlaying()) return;
        if (!std::exchange(begun_, true)) lead_ = hasBed ? course_.leadIn.count : 0;
        const std::int64_t silent = std::min(lead_, frames.count);
        lead_ -= silent;
        const std::int64_t end = position_.load() + frames.count - silent;
        position_.store(std::min(end, course_.frames.count));
        State playing = State::Playing;
        if (course_.endsEarly ? end > course_.frames.count : end >= course_.frames.count)
            state_.compare_exchange_strong(playing, State::Over);
    }

  private:
    enum class State { Opened, Playing, Over };

    const Bus bus_;
    const Course course_;
    std::atomic<State> state_{State::Opened};
    std::atomic<std::int64_t> position_{0};
    // Whoever lets it pass.
    bool begun_ = false;
    std::int64_t lead_ = 0;
};

SoundCounter::SoundCounter(std::shared_ptr<Decoders> decoders, std::optional<double> target)
    : decoders_(std::move(decoders)), target_(target) {}

std::shared_ptr<Voice> SoundCounter::Open(const SoundSource& source, Bus bus, Frames part, std::string* why) {
    const auto course = Look(*decoders_, target_, source, bus, part).Find(why);
    if (!course) return nullptr;
    auto voice = std::make_shared<CountedVoice>(bus, *course);
    const std::lock_guard lock(mutex_);
    voices_.push_back(voice);
    return voice;
}

std::optional<std::string> SoundCounter::ReadTags(const std::filesystem::path& path, std::string* why) {
    static std::mutex mutex;
    static std::map<FileIdentity, std::string> known;
    const auto file = OpenNonEmptyFile(path);
    {
        const std::lock_guard lock(mutex);
        const auto found = file ? known.find(IdentityOf(*file)) : known.end();
        if (found != known.end()) return found->second;
    }
    auto tags = decoders_->ReadTags(path, why);
    const std::lock_guard lock(mutex);
    if (tags && file) known.emplace(IdentityOf(*file), *tags);
    return tags;
}

void SoundCounter::Pass(Frames frames) {
    const std::lock_guard lock(mutex_);
    std::erase_if(voices_, [](const auto& voice) { return voice.use_count() == 1; });
    const bool hasBed = std::ranges::any_of(
        voices_, [](const auto& voice) { return voice->GetBus() != Bus::Speech && voice->IsPlaying(); });
    for (const auto& voice : voices_) voice->Pass(frames, hasBed);
}

int SoundCounter::Sounding() {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(std::ranges::count_if(
        voices_, [](const auto& voice) { return voice.use_count() > 1 && voice->IsPlaying(); }));
}

}  // namespace sorakaze::sound
