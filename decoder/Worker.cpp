// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "decoder/Worker.h"

#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>

#include <algorithm>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "decoder/Sandbox.h"
#include "player/TagReader.h"
#include "sound/SharedRing.h"
#include "sound/decoding/SoundReader.h"
#include "sound/measuring/Measurer.h"

namespace sorakaze::decoder {
namespace {

using namespace std::chrono_literals;
using sound::JobKind;
using sound::kSampleRate;
using sound::PlayAnswer;
using sound::SoundReader;

/// Processor time: of opening a file up to its first frames, and of each stretch of it.
constexpr auto kOpeningTime = 700ms, kStretchTime = 2000ms;
/// Of finding the place of an excerpt: some formats are read up to there.
constexpr auto kSeekingTime = 5000ms;
/// Frames that are decoded before they are handed over.
constexpr std::size_t kStretch = 32768;
/// Frames that are there with the answer, so that a sound that starts at once doesn't begin with a gap.
constexpr std::size_t kFirstFrames = 8192;
/// Frames of silence that are passed over before the answer, in a second or so: longer silence doesn't hold
/// it up.
constexpr sound::Frames kMostSkippedFirst{std::int64_t{kSampleRate} * 600};
constexpr unsigned kMostThreads = 4;

class Player {
  public:
    Player(int socket, void* ring, std::uint32_t capacity, bool fast)
        : socket_(socket), ring_(ring, capacity), ahead_(sound::FramesAhead(capacity, fast)), fast_(fast) {}

    PlayAnswer Open(FileDescriptor file, const sound::JobRequest& request) {
        const unsigned helpers =
            fast_ ? std::clamp(std::thread::hardware_concurrency(), 2u, kMostThreads) - 1 : 0;
        sound_ = SoundReader::Open(sound::InputFile::Adopt(std::move(file)), request.name, request.options,
                                   helpers);
        if (!sound_) return {PlayAnswer::NoSound, 0, -1};
        if (request.limit > 0) measurer_.emplace(sound::Frames{request.limit});
        do {
            Decode(kFirstFrames);
        } while (sound_->IsSkipping() && sound_->Skipped() < kMostSkippedFirst);
        const auto length = sound_->Length();
        return {PlayAnswer::Playing, 0, length ? length->count : -1};
    }

    /// Keeps the ring filled until the sound is over or nobody wants it any more.
    void Play() {
        answered_ = true;
        while (!over_) {
            if (NeedsFrames()) {
                while (!over_ && Room() > 0) Decode(std::min(Room(), kStretch));
            } else if (!AwaitRoom()) {
                return;
            }
        }
    }

  private:
    /// What is measured is decoded at once, whatever the mix needs. In frames.
    std::size_t Room() const { return measurer_ ? ring_.Free() : ahead_ - std::min(ahead_, ring_.Filled()); }
    bool NeedsFrames() const { return ring_.Filled() <= ahead_ / 2 || (measurer_ && ring_.Free() > 0); }

    void Decode(std::size_t most) {
        LimitProcessorTime(kStretchTime);
        const auto room = ring_.Writable();
        const auto batch = room.first(std::min(room.size(), most * sound::kChannels));
        const std::size_t frames = sound_->Read(batch);
        Measure(batch.first(frames * sound::kChannels));
        if (frames > 0 && ring_.Commit(frames)) Tell();
        over_ = sound_->IsOver();
        if (over_ && ring_.Finish()) Tell();
    }

    /// The frames on their way to the ring. The application may be waiting for the result.
    void Measure(std::span<const float> frames) {
        if (!measurer_) return;
        measurer_->Add(frames);
        if (!measurer_->IsFull() && !sound_->IsOver()) return;
        ring_.SetMeasurement(PackMeasurement(measurer_->Finish(sound_->IsOver())));
        measurer_.reset();
        if (answered_) Tell();  // nothing may come before the answer
    }

    void Tell() {
        const char word = 'r';
        ::send(socket_, &word, 1, MSG_DONTWAIT | MSG_NOSIGNAL);
    }

    /// Sleeps until half of the frames ahead may be read. False when the application has closed the socket.
    bool AwaitRoom() {
        ring_.AnnounceSleep();
        if (NeedsFrames()) return true;
        pollfd socket{socket_, POLLIN, 0};
        ::poll(&socket, 1, begun_ && !fast_ ? MillisecondsToHalf() : -1);
        char word = 0;
        while (::recv(socket_, &word, 1, MSG_DONTWAIT) > 0) begun_ = true;
        return (socket.revents & (POLLHUP | POLLERR)) == 0;
    }

    /// A device consumes frames at the speed of playback and wakes nobody. A device that has stopped is
    /// polled.
    int MillisecondsToHalf() {
        constexpr std::size_t kLeast = 5, kWhenStill = 500;
        const std::size_t above = ring_.Filled() - std::min(ring_.Filled(), ahead_ / 2);
        const std::size_t more = above == std::exchange(lastAbove_, above) ? kWhenStill : 0;
        return static_cast<int>(std::max(above * 1000 / kSampleRate, kLeast) + more);
    }

    const int socket_;
    sound::RingWriter ring_;
    const std::size_t ahead_;  ///< frames
    const bool fast_;
    std::optional<SoundReader> sound_;
    std::optional<sound::Measurer> measurer_;  ///< while there is something to measure
    bool answered_ = false;
    bool begun_ = false;  ///< the frames are being taken
    bool over_ = false;
    std::size_t lastAbove_ = 0;
};

std::chrono::milliseconds OpeningTime(const Job& job) {
    return job.request.options.excerpt.start.count > 0 ? kSeekingTime : kOpeningTime;
}

template <typename Answer>
void Send(int socket, const Answer& answer) {
    ::send(socket, &answer, sizeof answer, MSG_NOSIGNAL);
}

int WorkPlay(Job& job) {
    const std::uint32_t capacity = job.request.ring;
    void* const memory =
        ::mmap(nullptr, sound::RingBytes(capacity), PROT_READ | PROT_WRITE, MAP_SHARED, job.ring.Get(), 0);
    if (memory == MAP_FAILED) return 1;
    const bool fast = job.request.kind == JobKind::PlayFast;
    SandboxWorker(job.request.memory, fast ? Threads::Some : Threads::None);
    LimitProcessorTime(OpeningTime(job));
    Player player(job.socket.Get(), memory, capacity, fast);
    PlayAnswer answer{PlayAnswer::TooLarge, 0, -1};
    try {
        answer = player.Open(std::move(job.file), job.request);
    } catch (const std::bad_alloc&) {
    } catch (const std::system_error&) {  // no thread
    }
    Send(job.socket.Get(), answer);
    if (answer.result == PlayAnswer::Playing) player.Play();
    return 0;
}

int WorkTags(Job& job) {
    SandboxWorker(job.request.memory, Threads::None);
    LimitProcessorTime(kOpeningTime);
    std::string record;
    try {
        record = player::ReadTags(std::move(job.file), job.request.name).Answer();
    } catch (const std::bad_alloc&) {
    }
    record.resize(std::min(record.size(), sound::kLongestTags - 1));
    record += '\n';  // an empty packet would look like the end
    ::send(job.socket.Get(), record.data(), record.size(), MSG_NOSIGNAL);
    return 0;
}

/// Measures a sound, telling the application of each stretch. Empty for a file without sound.
std::optional<sound::Measurement> Measured(Job& job) {
    auto sound = SoundReader::Open(sound::InputFile::Adopt(std::move(job.file)), job.request.name,
                                   job.request.options);
    if (!sound) return std::nullopt;
    sound::Measurer measurer(sound::Frames{job.request.limit});
    std::vector<float> stretch(kStretch * sound::kChannels);
    while (!sound->IsOver() && !measurer.IsFull()) {
        LimitProcessorTime(kStretchTime);
        measurer.Add(std::span(stretch).first(sound->Read(stretch) * sound::kChannels));
        const char word = 'm';
        ::send(job.socket.Get(), &word, 1, MSG_DONTWAIT | MSG_NOSIGNAL);
    }
    return measurer.Finish(sound->IsOver());
}

int WorkMeasure(Job& job) {
    if (job.request.kind == JobKind::MeasureBackground) UseIdleTime();
    SandboxWorker(job.request.memory, Threads::None);
    LimitProcessorTime(OpeningTime(job));
    try {
        const auto measurement = Measured(job);
        if (!measurement) return 1;
        const std::string packed = PackMeasurement(*measurement);
        ::send(job.socket.Get(), packed.data(), packed.size(), MSG_NOSIGNAL);
    } catch (const std::bad_alloc&) {
        return 1;
    }
    return 0;
}

}  // namespace

int Work(Job job) {
    switch (job.request.kind) {
        case JobKind::Tags:
            return WorkTags(job);
        case JobKind::Measure:
        case JobKind::MeasureBackground:
            return WorkMeasure(job);
        default:
            return WorkPlay(job);
    }
}

}  // namespace sorakaze::decoder
