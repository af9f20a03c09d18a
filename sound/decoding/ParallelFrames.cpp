// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <new>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "sound/decoding/FrameSource.h"

namespace sorakaze::sound {
namespace {

/// Samples of each channel of a part: more than a second of sound, so that few packets are decoded twice; the
/// first part is small, so that the beginning is available at once.
constexpr std::int64_t kPartSamples = 64 * 1152;
constexpr std::int64_t kFirstPartSamples = 12 * 1152;
/// The least samples of a packet whose container doesn't state them.
constexpr std::int64_t kLeastSamples = 576;
/// Parts that are being decoded or decoded ahead: about half a megabyte of memory each.
constexpr std::size_t kMaxParts = 4;

enum class Memory {
    None,       ///< every packet is decoded by itself
    Reservoir,  ///< a packet's bits may begin in the packets before, and its sound overlaps with the last
                ///< one's
    Long,       ///< parts would not be the same as the whole
};

Memory MemoryOf(const PacketReader& reader) {
    // Others than the formats' own containers may change the codec's parameters half-way.
    const std::string_view container = reader.Container().iformat->name;
    switch (reader.Stream().codecpar->codec_id) {
        case AV_CODEC_ID_MP3:
            return container == "mp3" ? Memory::Reservoir : Memory::Long;
        case AV_CODEC_ID_FLAC:
            return container == "flac" ? Memory::None : Memory::Long;
        case AV_CODEC_ID_ALAC:
            return container.find("mp4") != std::string_view::npos ? Memory::None : Memory::Long;
        default:
            return Memory::Long;
    }
}

using Packets = std::vector<AvPointer<AVPacket>>;

AvPointer<AVPacket> Made(AVPacket* packet) {
    if (!packet) throw std::bad_alloc();
    return AvPointer<AVPacket>(packet);
}

/// Gives a packet memory of its own, so that threads share nothing but what a mutex hands over.
void MakeOwn(AVPacket& packet) {
    if (av_packet_make_writable(&packet) < 0) throw std::bad_alloc();
}

/// The bytes of an MP3 packet that later packets may refer back to.
int ReservoirBytes(const AVPacket& packet) {
    if (packet.size < 4) return 0;
    const bool lowRate = (packet.data[1] & 0x08) == 0;
    const bool mono = packet.data[3] >> 6 == 3;
    const bool checked = (packet.data[1] & 0x01) == 0;
    const int sideInformation = lowRate ? (mono ? 9 : 17) : (mono ? 17 : 32);
    return std::max(0, packet.size - 4 - (checked ? 2 : 0) - sideInformation);
}

/// How many of the last packets a decoder must see before it goes on as if it had seen all of them.
std::size_t WarmUpOf(Memory memory, const Packets& before) {
    if (memory != Memory::Reservoir) return 0;
    constexpr int kFurthest = 511;  // bytes that a packet can reach back
    constexpr std::size_t kOverlap =
        3;  // packets whose sound reaches into the following ones, and one to spare
    std::size_t count = 0;
    for (int bytes = 0; count < before.size() && bytes < kFurthest; ++count)
        bytes += ReservoirBytes(*before[before.size() - 1 - count]);
    return std::min(before.size(), count + kOverlap);
}

/// The packets of a stretch of the file, and then its frames, joined into long ones. Used again and again.
class Part {
  public:
    bool done = false;
    Packets packets;
    std::size_t warmUp = 0;  ///< packets at the beginning whose frames belong to the part before

    void Decode(AVCodecContext& codec) {
        for (std::size_t i = 0; i < packets.size() && decoded_; ++i) {
            if (avcodec_send_packet(&codec, packets[i].get()) < 0) continue;
            while (avcodec_receive_frame(&codec, decoded_.get()) == 0)
                if (i >= warmUp && decoded_->nb_samples > 0) Append(*decoded_, packets.size() - i);
        }
        packets.clear();
    }

    std::size_t FrameCount() const { return used_; }
    AVFrame* Frame(std::size_t index) { return joined_[index].frame.get(); }

    void Clear() {
        packets.clear();
        done = false;
        used_ = 0;
    }

  private:
    struct Joined {
        AvPointer<AVFrame> frame;
        int capacity = 0;
    };

    static bool SameForm(const AVFrame& a, const AVFrame& b) {
        return a.format == b.format && a.sample_rate == b.sample_rate &&
               av_channel_layout_compare(&a.ch_layout, &b.ch_layout) == 0;
    }

    void Append(const AVFrame& frame, std::size_t packetsLeft) {
        const bool fits =
            used_ > 0 && SameForm(*joined_[used_ - 1].frame, frame) &&
            joined_[used_ - 1].frame->nb_samples + frame.nb_samples <= joined_[used_ - 1].capacity;
        if (!fits && !Begin(frame, static_cast<int>(packetsLeft) * std::max(frame.nb_samples, kUsualSamples)))
            return;
        AVFrame& to = *joined_[used_ - 1].frame;
        av_samples_copy(to.extended_data, frame.extended_data, to.nb_samples, 0, frame.nb_samples,
                        frame.ch_layout.nb_channels, static_cast<AVSampleFormat>(frame.format));
        to.nb_samples += frame.nb_samples;
    }

    /// Begins a joined frame in the form of `like`, if possible in the memory of an earlier one.
    bool Begin(const AVFrame& like, int capacity) {
        if (joined_.size() == used_) joined_.emplace_back();
        Joined& joined = joined_[used_];
        if (!joined.frame || joined.capacity < capacity || !SameForm(*joined.frame, like)) {
            joined.capacity = 0;
            joined.frame.reset(av_frame_alloc());
            if (!joined.frame || av_channel_layout_copy(&joined.frame->ch_layout, &like.ch_layout) < 0)
                return false;
            joined.frame->format = like.format;
            joined.frame->sample_rate = like.sample_rate;
            joined.frame->nb_samples = capacity;
            if (av_frame_get_buffer(joined.frame.get(), 0) < 0) {
                joined.frame.reset();
                return false;
            }
            joined.capacity = capacity;
        }
        joined.frame->nb_samples = 0;
        ++used_;
        return true;
    }

    static constexpr int kUsualSamples = 1152;  // of a frame; the file's first one is often cut

    AvPointer<AVFrame> decoded_{av_frame_alloc()};
    std::vector<Joined> joined_;
    std::size_t used_ = 0;
};

class ParallelFrames final : public FrameSource {
  public:
    ParallelFrames(std::unique_ptr<PacketReader> reader, Memory memory, unsigned helpers)
        : memory_(memory), reader_(std::move(reader)) {
        for (unsigned i = 0; i < helpers; ++i) helpers_.emplace_back([this] { Help(); });
    }

    ~ParallelFrames() override {
        {
            const std::lock_guard lock(mutex_);
            closed_ = true;
        }
        partTaken_.notify_all();
        for (std::thread& helper : helpers_) helper.join();
    }

    AVFrame* Next() override {
        while (!current_ || nextFrame_ == current_->FrameCount()) {
            nextFrame_ = 0;
            current_ = TakeFront(std::move(current_));
            if (!current_) return nullptr;
        }
        return current_->Frame(nextFrame_++);
    }

    std::optional<Frames> Length() const override { return reader_->Length(); }

  private:
    /// Changes the part that is used up for the next one; empty at the end. Rather than wait for another
    /// thread it decodes a later part.
    std::unique_ptr<Part> TakeFront(std::unique_ptr<Part> usedUp) {
        if (usedUp) {
            usedUp->Clear();
            const std::lock_guard lock(mutex_);
            idleParts_.push_back(std::move(usedUp));
        }
        for (;;) {
            if (auto part = TakeFrontIfDone()) return part;
            if (DecodeOne()) continue;
            std::unique_lock lock(mutex_);
            if (parts_.empty()) return nullptr;
            partDone_.wait(lock, [&] { return parts_.front()->done; });
        }
    }

    std::unique_ptr<Part> TakeFrontIfDone() {
        const std::lock_guard lock(mutex_);
        if (parts_.empty() || !parts_.front()->done) return nullptr;
        auto part = std::move(parts_.front());
        parts_.pop_front();
        partTaken_.notify_one();
        return part;
    }

    /// A helper's thread: decodes ahead for as long as there is something to decode.
    void Help() {
        for (;;) {
            {
                std::unique_lock lock(mutex_);
                partTaken_.wait(lock, [this] { return closed_ || ended_ || parts_.size() < kMaxParts; });
                if (closed_ || ended_) return;
            }
            DecodeOne();
        }
    }

    /// False when there are parts enough, or no more.
    bool DecodeOne() {
        AvPointer<AVCodecContext> codec;
        Part* const part = CutPart(codec);
        if (!part) return false;
        if (!codec) codec = reader_->MakeCodec();
        if (codec) part->Decode(*codec);

        const std::lock_guard lock(mutex_);
        if (codec) {
            avcodec_flush_buffers(codec.get());
            idleCodecs_.push_back(std::move(codec));
        }
        part->done = true;
        partDone_.notify_one();
        return true;
    }

    /// Reads the packets of one more part and appends it to parts_.
    Part* CutPart(AvPointer<AVCodecContext>& codec) {
        const std::lock_guard lock(mutex_);
        if (ended_ || parts_.size() >= kMaxParts) return nullptr;
        auto part = TakeIdle(idleParts_);
        if (!part) part = std::make_unique<Part>();
        part->packets = std::move(before_);
        part->warmUp = part->packets.size();
        const std::int64_t wanted = !std::exchange(begun_, true) ? kFirstPartSamples : kPartSamples;
        for (std::int64_t samples = 0; samples < wanted;) {
            auto packet = Made(av_packet_alloc());
            if (!reader_->Read(*packet)) {
                ended_ = true;
                partTaken_.notify_all();
                break;
            }
            samples += SamplesOf(*packet);
            MakeOwn(*packet);
            part->packets.push_back(std::move(packet));
        }
        if (part->packets.size() == part->warmUp) return nullptr;
        before_ = LastOf(part->packets, WarmUpOf(memory_, part->packets));
        codec = TakeIdle(idleCodecs_);
        parts_.push_back(std::move(part));
        return parts_.back().get();
    }

    static Packets LastOf(const Packets& packets, std::size_t count) {
        Packets last;
        for (std::size_t i = packets.size() - count; i < packets.size(); ++i) {
            last.push_back(Made(av_packet_clone(packets[i].get())));
            MakeOwn(*last.back());
        }
        return last;
    }

    std::int64_t SamplesOf(const AVPacket& packet) const {
        const AVRational samples{1, std::max(1, reader_->Stream().codecpar->sample_rate)};
        const std::int64_t stated = av_rescale_q(packet.duration, reader_->Stream().time_base, samples);
        return std::clamp<std::int64_t>(stated, kLeastSamples, kPartSamples);
    }

    template <typename T>
    static T TakeIdle(std::vector<T>& idle) {
        if (idle.empty()) return {};
        T taken = std::move(idle.back());
        idle.pop_back();
        return taken;
    }

    const Memory memory_;
    std::mutex mutex_;  // guards all below; a part under way belongs to the thread that decodes it
    std::condition_variable partDone_;
    std::condition_variable partTaken_;
    bool closed_ = false;  ///< the helpers are to end
    bool ended_ = false;   ///< the reader gives no more packets
    std::unique_ptr<PacketReader> reader_;
    bool begun_ = false;  ///< the first part was cut
    Packets before_;      ///< what the next part warms up with
    std::deque<std::unique_ptr<Part>> parts_;
    std::vector<AvPointer<AVCodecContext>> idleCodecs_;
    std::vector<std::unique_ptr<Part>> idleParts_;

    // Of the thread that calls Next.
    std::unique_ptr<Part> current_;
    std::size_t nextFrame_ = 0;

    std::vector<std::thread> helpers_;  ///< last, so that they start after all else is initialised
};

}  // namespace

std::unique_ptr<FrameSource> MakePartedFrames(std::unique_ptr<PacketReader>& reader, unsigned helpers) {
    const Memory memory = MemoryOf(*reader);
    if (memory == Memory::Long) return nullptr;
    return std::make_unique<ParallelFrames>(std::move(reader), memory, helpers);
}

}  // namespace sorakaze::sound
