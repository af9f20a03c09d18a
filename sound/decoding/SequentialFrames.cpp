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

/// Decoded before the place that is wanted, in seconds, so that decoders with a memory have it again.
constexpr double kWarmUp = 1;

std::int64_t SampleOf(Frames place, const AVFrame& frame) {
    return av_rescale(place.count, frame.sample_rate, kSampleRate);
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

    Place GoTo(Frames start) override {
        // The first frame tells at which time the sound begins.
        AVFrame* const first = Next();
        if (!first) return {};
        const std::int64_t begin = first->best_effort_timestamp;
        const std::int64_t wanted = SampleOf(start, *first);
        const AVRational samples{1, first->sample_rate};
        const auto warmUp = static_cast<std::int64_t>(kWarmUp * first->sample_rate);
        if (begin == AV_NOPTS_VALUE || wanted < 2 * warmUp) return PlaceOf(wanted, 0, first);
        for (const std::int64_t earlier : {warmUp, 10 * warmUp, wanted}) {
            const std::int64_t to = std::max<std::int64_t>(wanted - earlier, 0);
            if (!Restart(begin + av_rescale_q(to, samples, reader_->Stream().time_base))) continue;
            AVFrame* const frame = Next();
            if (!frame || frame->best_effort_timestamp == AV_NOPTS_VALUE) continue;
            const std::int64_t at =
                av_rescale_q(frame->best_effort_timestamp - begin, reader_->Stream().time_base, samples);
            if (at <= wanted) return PlaceOf(wanted, at, frame);
        }
        return {};
    }

    std::optional<Frames> Length() const override { return reader_->Length(); }

  private:
    /// Goes on from the packet at `time`.
    bool Restart(std::int64_t time) {
        if (!reader_->Seek(time)) return false;
        avcodec_flush_buffers(codec_.get());
        av_packet_unref(nextPacket_.get());
        inputEnded_ = !reader_->Read(*nextPacket_);
        drained_ = ended_ = false;
        return true;
    }

    /// The place of the sample `wanted`; `frame` begins with the sample `at`.
    Place PlaceOf(std::int64_t wanted, std::int64_t at, AVFrame* frame) {
        decodedSamples_ = at + frame->nb_samples;
        for (; frame && at + frame->nb_samples <= wanted; frame = Next()) at += frame->nb_samples;
        return frame ? Place{frame, static_cast<int>(wanted - at)} : Place{};
    }

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

FrameSource::Place FrameSource::GoTo(Frames start) {
    std::int64_t at = 0;
    for (AVFrame* frame = Next(); frame; frame = Next()) {
        const std::int64_t wanted = SampleOf(start, *frame);
        if (at + frame->nb_samples > wanted)
            return {frame, static_cast<int>(std::max<std::int64_t>(wanted - at, 0))};
        at += frame->nb_samples;
    }
    return {};
}

std::unique_ptr<FrameSource> MakeSequentialFrames(std::unique_ptr<PacketReader> reader) {
    auto frames = std::make_unique<SequentialFrames>(std::move(reader));
    return frames->IsUsable() ? std::move(frames) : nullptr;
}

}  // namespace sorakaze::sound
