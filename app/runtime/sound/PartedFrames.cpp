// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

#include "app/runtime/sound/FrameSource.h"

namespace sorakaze::sound {
namespace {

/// Packets of a part: more than a second of sound, so that few are decoded twice; the first part is small, so
/// that the sound's beginning is there at once.
constexpr std::size_t kPartPackets = 64;
constexpr std::size_t kFirstPartPackets = 12;
/// Parts under way or decoded ahead. They are what a parted file takes in memory: about half a megabyte each.
constexpr int kMaxParts = 4;
/// The packets that are kept for the next part to warm up with.
constexpr std::size_t kMaxWarmUp = 40;

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

using Packets = std::deque<AvPointer<AVPacket>>;

/// How many of the last packets a decoder must see before it goes on as if it had seen all of them.
std::size_t WarmUpOf(Memory memory, const Packets& before) {
    if (memory != Memory::Reservoir) return 0;
    constexpr int kReservoirBytes = 512;  // the furthest that a packet reaches back
    constexpr int kOverheadBytes = 38;    // header, check sum and side information, which aren't reached for
    constexpr std::size_t kOverlap =
        3;  // packets whose sound reaches into the following ones, and one to spare
    std::size_t count = 0;
    for (int bytes = 0; count < before.size() && bytes < kReservoirBytes; ++count)
        bytes += std::max(0, before[before.size() - 1 - count]->size - kOverheadBytes);
    return std::min(before.size(), count + kOverlap);
}

struct Part {
    std::vector<AvPointer<AVPacket>> packets;
    std::size_t warmUp = 0;  ///< packets at the beginning whose frames belong to the part before
    std::vector<AvPointer<AVFrame>> frames;
    bool done = false;
};

void Decode(AVCodecContext& codec, Part& part) {
    AvPointer<AVFrame> frame;
    for (std::size_t i = 0; i < part.packets.size(); ++i) {
        if (avcodec_send_packet(&codec, part.packets[i].get()) < 0) continue;
        for (;;) {
            if (!frame) frame.reset(av_frame_alloc());
            if (!frame || avcodec_receive_frame(&codec, frame.get()) < 0) break;
            if (i >= part.warmUp && frame->nb_samples > 0) part.frames.push_back(std::move(frame));
        }
    }
    part.packets.clear();
}

class PartedFrames final : public FrameSource {
  public:
    PartedFrames(std::unique_ptr<PacketReader> reader, Memory memory)
        : memory_(memory), reader_(std::move(reader)) {}

    AVFrame* Next() override {
        while (!current_ || ++frame_ == current_->frames.size()) {
            frame_ = static_cast<std::size_t>(-1);
            current_ = TakeFront();
            if (!current_) return nullptr;
        }
        return current_->frames[frame_].get();
    }

    bool WantsHelp() const override { return ahead_.load() < kMaxParts && !ended_.load(); }

    void Help() override { DecodeOne(); }

    std::optional<Frames> Length() const override { return reader_->Length(); }

  private:
    /// The next part, decoded; empty at the end. Rather than wait for another thread it decodes a later part.
    std::unique_ptr<Part> TakeFront() {
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
        ahead_.fetch_sub(1);
        return part;
    }

    /// False when there are parts enough, or no more.
    bool DecodeOne() {
        AvPointer<AVCodecContext> codec;
        Part* const part = CutPart(codec);
        if (!part) return false;
        if (!codec) codec = reader_->MakeCodec();
        if (codec) Decode(*codec, *part);

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
        if (!WantsHelp()) return nullptr;
        auto part = std::make_unique<Part>();
        part->warmUp = WarmUpOf(memory_, before_);
        for (auto packet = before_.end() - static_cast<std::ptrdiff_t>(part->warmUp); packet != before_.end();
             ++packet)
            part->packets.emplace_back(av_packet_clone(packet->get()));
        const std::size_t wanted = before_.empty() ? kFirstPartPackets : kPartPackets;
        for (std::size_t i = 0; i < wanted && !ended_.load(); ++i) {
            AvPointer<AVPacket> packet(av_packet_alloc());
            if (!packet || !reader_->Read(*packet)) {
                ended_.store(true);
                break;
            }
            before_.emplace_back(av_packet_clone(packet.get()));
            if (before_.size() > kMaxWarmUp) before_.pop_front();
            part->packets.push_back(std::move(packet));
        }
        if (part->packets.size() == part->warmUp) return nullptr;
        if (!idleCodecs_.empty()) {
            codec = std::move(idleCodecs_.back());
            idleCodecs_.pop_back();
        }
        parts_.push_back(std::move(part));
        ahead_.fetch_add(1);
        return parts_.back().get();
    }

    const Memory memory_;
    std::atomic<int> ahead_{0};       // the size of parts_, for those without the lock
    std::atomic<bool> ended_{false};  // the reader gives no more packets
    std::mutex mutex_;  // guards all below; a part under way belongs to the thread that decodes it
    std::condition_variable partDone_;
    std::unique_ptr<PacketReader> reader_;
    Packets before_;  ///< the last packets read
    std::deque<std::unique_ptr<Part>> parts_;
    std::vector<AvPointer<AVCodecContext>> idleCodecs_;

    // Of the thread that calls Next.
    std::unique_ptr<Part> current_;
    std::size_t frame_ = 0;
};

}  // namespace

std::unique_ptr<FrameSource> MakePartedFrames(std::unique_ptr<PacketReader>& reader) {
    const Memory memory = MemoryOf(*reader);
    if (memory == Memory::Long) return nullptr;
    return std::make_unique<PartedFrames>(std::move(reader), memory);
}

}  // namespace sorakaze::sound
