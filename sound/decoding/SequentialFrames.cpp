// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cstdio>
#include <string_view>
#include <utility>

#include "sound/decoding/FrameSource.h"

namespace sorakaze::sound {
namespace {

/// The length that a common encoder of AAC notes in a tag, as its container can't express it otherwise. Tags
/// outlive conversions and cuts, so one that contradicts the container is not believed.
std::optional<std::int64_t> StatedSamples(const PacketReader& reader) {
    const AVDictionaryEntry* tag = av_dict_get(reader.Container().metadata, "iTunSMPB", nullptr, 0);
    unsigned long long samples = 0;
    if (!tag || std::sscanf(tag->value, "%*x %*x %*x %llx", &samples) != 1) return std::nullopt;
    const AVStream& stream = reader.Stream();
    if (stream.duration == AV_NOPTS_VALUE || stream.codecpar->sample_rate <= 0) return std::nullopt;
    constexpr std::int64_t kMostPadding = 8192;
    const auto stated = static_cast<std::int64_t>(samples);
    const std::int64_t contained =
        av_rescale_q(stream.duration, stream.time_base, AVRational{1, stream.codecpar->sample_rate});
    if (stated < contained - kMostPadding || stated > contained + kMostPadding) return std::nullopt;
    return stated;
}

class SequentialFrames final : public FrameSource {
  public:
    explicit SequentialFrames(std::unique_ptr<PacketReader> reader)
        : reader_(std::move(reader)),
          codec_(reader_->MakeCodec()),
          packet_(av_packet_alloc()),
          nextPacket_(av_packet_alloc()),
          frame_(av_frame_alloc()) {
        if (!IsUsable()) return;
        lastPacketIsCut_ =
            std::string_view(reader_->Container().iformat->name).find("mp4") != std::string_view::npos;
        if (lastPacketIsCut_) statedSamples_ = StatedSamples(*reader_);
        inputEnded_ = !reader_->Read(*nextPacket_);
    }

    bool IsUsable() const { return codec_ && packet_ && nextPacket_ && frame_; }

    AVFrame* Next() override {
        while (!ended_) {
            const int result = avcodec_receive_frame(codec_.get(), frame_.get());
            if (result == 0) {
                TrimEnd();
                if (frame_->nb_samples > 0) return frame_.get();
            } else if (result != AVERROR(EAGAIN) || !FeedPacket()) {
                ended_ = result == AVERROR_EOF || drained_;
            }
        }
        return nullptr;
    }

    std::optional<Frames> Length() const override { return reader_->Length(); }

  private:
    /// Gives the codec the next packet, or the sign that there is none. False when it can't be given anything
    /// more.
    bool FeedPacket() {
        while (!inputEnded_) {
            std::swap(packet_, nextPacket_);
            inputEnded_ = !reader_->Read(*nextPacket_);
            const int sent = avcodec_send_packet(codec_.get(), packet_.get());
            av_packet_unref(packet_.get());
            if (sent >= 0) return true;  // others are damaged ones
        }
        return !std::exchange(drained_, true) && avcodec_send_packet(codec_.get(), nullptr) >= 0;
    }

    /// Cuts off what the encoder added to fill its last block, where the decoding library leaves that to its
    /// user.
    void TrimEnd() {
        std::int64_t kept = frame_->nb_samples;
        if (statedSamples_) {
            kept = std::clamp<std::int64_t>(*statedSamples_ - decodedSamples_, 0, kept);
        } else if (lastPacketIsCut_ && inputEnded_ && frame_->pkt_duration > 0 && frame_->sample_rate > 0) {
            const AVRational samples{1, frame_->sample_rate};
            kept = std::min(kept, av_rescale_q(frame_->pkt_duration, reader_->Stream().time_base, samples));
        }
        frame_->nb_samples = static_cast<int>(kept);
        decodedSamples_ += kept;
    }

    std::unique_ptr<PacketReader> reader_;
    AvPointer<AVCodecContext> codec_;
    AvPointer<AVPacket> packet_;
    AvPointer<AVPacket> nextPacket_;  ///< read ahead, as the last packet is treated differently
    AvPointer<AVFrame> frame_;
    bool inputEnded_ = false;  ///< no nextPacket_
    bool drained_ = false;     ///< the codec knows that nothing follows
    bool ended_ = false;
    bool lastPacketIsCut_ = false;  ///< the container states the end by the last packet's duration
    std::optional<std::int64_t> statedSamples_;  ///< the container states the length exactly
    std::int64_t decodedSamples_ = 0;
};

}  // namespace

std::unique_ptr<FrameSource> MakeSequentialFrames(std::unique_ptr<PacketReader> reader) {
    auto frames = std::make_unique<SequentialFrames>(std::move(reader));
    return frames->IsUsable() ? std::move(frames) : nullptr;
}

}  // namespace sorakaze::sound
