// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/sound/Decoder.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string_view>
#include <utility>

namespace sorakaze::sound {
namespace {

/// A hopeless file ends after so many errors in a row; an honest one with a damaged stretch goes on behind
/// it.
constexpr int kMaxFailures = 4096;

/// Larger samples can only come from damaged or hostile float data. Sums of such values would poison the
/// limiter.
constexpr float kSaneSample = 64.0f;

void DropInsaneSamples(std::span<float> samples) {
    for (float& sample : samples) sample = std::fabs(sample) <= kSaneSample ? sample : 0.0f;
}

/// Containers that refer to other files or addresses get none of them.
int RefuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
    return AVERROR(EACCES);
}

/// The length that a common encoder of AAC notes in a tag, as its container can't express it otherwise.
std::optional<std::int64_t> StatedSamples(const AVFormatContext& input) {
    const AVDictionaryEntry* tag = av_dict_get(input.metadata, "iTunSMPB", nullptr, 0);
    unsigned long long samples = 0;
    if (!tag || std::sscanf(tag->value, "%*x %*x %*x %llx", &samples) != 1) return std::nullopt;
    constexpr unsigned long long kSane = 1ull << 40;
    return samples > 0 && samples < kSane ? std::optional(static_cast<std::int64_t>(samples)) : std::nullopt;
}

}  // namespace

std::unique_ptr<Decoder> Decoder::Open(const std::filesystem::path& file) {
    SilenceAvLogging();
    std::unique_ptr<Decoder> decoder(new Decoder);
    if (!decoder->OpenInput(file) || !decoder->OpenCodec()) return nullptr;

    // The first sound is decoded into the spare room, from where the first Read takes it.
    while (decoder->spareEnd_ == 0 && !decoder->ended_) {
        if (decoder->NextFrame())
            decoder->ConvertFrame({});
        else
            decoder->FlushConverter({});
    }
    return decoder->spareEnd_ > 0 ? std::move(decoder) : nullptr;
}

bool Decoder::OpenInput(const std::filesystem::path& file) {
    file_ = InputFile::Open(file);
    if (!file_) return false;
    AVFormatContext* context = avformat_alloc_context();
    if (!context) return false;
    context->pb = file_->Io();
    context->io_open = &RefuseToOpen;
    context->protocol_whitelist = av_strdup("none");
    // The name only helps to tell formats apart by their endings. Frees the context when it fails.
    if (avformat_open_input(&context, file.c_str(), nullptr, nullptr) < 0) return false;
    input_.reset(context);
    if (avformat_find_stream_info(context, nullptr) < 0) return false;

    const int index = av_find_best_stream(context, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (index < 0) return false;
    for (unsigned i = 0; i < context->nb_streams; ++i)
        context->streams[i]->discard = i == static_cast<unsigned>(index) ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    stream_ = context->streams[index];
    lastPacketIsCut_ = std::string_view(context->iformat->name).find("mp4") != std::string_view::npos;
    if (lastPacketIsCut_) statedSamples_ = StatedSamples(*context);
    return true;
}

bool Decoder::OpenCodec() {
    const AVCodec* codec = avcodec_find_decoder(stream_->codecpar->codec_id);
    if (!codec) return false;
    codec_.reset(avcodec_alloc_context3(codec));
    packet_.reset(av_packet_alloc());
    nextPacket_.reset(av_packet_alloc());
    frame_.reset(av_frame_alloc());
    if (!codec_ || !packet_ || !nextPacket_ || !frame_) return false;
    if (avcodec_parameters_to_context(codec_.get(), stream_->codecpar) < 0) return false;
    codec_->pkt_timebase = stream_->time_base;
    codec_->thread_count = 1;
    return avcodec_open2(codec_.get(), codec, nullptr) >= 0;
}

/// Decodes the next frame into frame_. False at the end.
bool Decoder::NextFrame() {
    if (framePending_) return true;
    while (failures_ < kMaxFailures) {
        const int result = avcodec_receive_frame(codec_.get(), frame_.get());
        if (result == 0) {
            failures_ = 0;
            TrimEnd();
            if (frame_->nb_samples <= 0) continue;
            framePending_ = true;
            return true;
        }
        if (result == AVERROR_EOF) return false;
        if (result == AVERROR(EAGAIN)) {
            if (!FeedPacket()) return false;
        } else {
            ++failures_;
        }
    }
    return false;
}

/// Cuts off what the encoder added to fill its last block, where the decoding library leaves that to its
/// user.
void Decoder::TrimEnd() {
    if (statedSamples_) {
        const std::int64_t left = std::max<std::int64_t>(0, *statedSamples_ - decodedSamples_);
        frame_->nb_samples = static_cast<int>(std::min<std::int64_t>(frame_->nb_samples, left));
    } else if (lastPacketIsCut_ && inputEnded_ && frame_->pkt_duration > 0 && frame_->sample_rate > 0) {
        const std::int64_t stated =
            av_rescale_q(frame_->pkt_duration, stream_->time_base, AVRational{1, frame_->sample_rate});
        frame_->nb_samples = static_cast<int>(std::min<std::int64_t>(frame_->nb_samples, stated));
    }
    decodedSamples_ += frame_->nb_samples;
}

/// Gives the codec the next packet of the stream, or the sign that there is none. False when neither can go
/// on.
bool Decoder::FeedPacket() {
    if (!inputBegun_) {
        inputBegun_ = true;
        inputEnded_ = !ReadPacket();
    }
    while (failures_ < kMaxFailures && !inputEnded_) {
        std::swap(packet_, nextPacket_);
        inputEnded_ = !ReadPacket();
        const int sent = avcodec_send_packet(codec_.get(), packet_.get());
        av_packet_unref(packet_.get());
        if (sent >= 0) return true;
        ++failures_;
    }
    return !std::exchange(drained_, true) && avcodec_send_packet(codec_.get(), nullptr) >= 0;
}

/// Reads the stream's next packet into nextPacket_. False at the file's end.
bool Decoder::ReadPacket() {
    while (failures_ < kMaxFailures) {
        const int read = av_read_frame(input_.get(), nextPacket_.get());
        if (read >= 0 && nextPacket_->stream_index == stream_->index) return true;
        if (read >= 0)
            av_packet_unref(nextPacket_.get());
        else if (read == AVERROR(EAGAIN) || read == AVERROR_INVALIDDATA)
            ++failures_;
        else
            return false;
    }
    return false;
}

std::size_t Decoder::Read(std::span<float> interleaved) {
    std::size_t done = 0;
    const std::size_t wanted = interleaved.size() / kChannels;
    while (done < wanted) {
        const auto room = interleaved.subspan(done * kChannels);
        if (spareBegin_ < spareEnd_)
            done += TakeSpare(room);
        else if (ended_)
            break;
        else if (NextFrame())
            done += ConvertFrame(room);
        else
            done += FlushConverter(room);
    }
    DropInsaneSamples(interleaved.first(done * kChannels));
    return done;
}

std::size_t Decoder::ConvertFrame(std::span<float> room) {
    if (!converter_.Fits(*frame_)) {
        const auto target = RoomFor(converter_.Bound(0), room);
        const std::size_t frames = converter_.Flush(target);
        if (!converter_.SetUp(*frame_)) {
            framePending_ = false;
            ++failures_;
        }
        return Delivered(frames, target, room);
    }
    const auto target = RoomFor(converter_.Bound(frame_->nb_samples), room);
    framePending_ = false;
    return Delivered(converter_.Convert(*frame_, target), target, room);
}

std::size_t Decoder::FlushConverter(std::span<float> room) {
    ended_ = true;
    const auto target = RoomFor(converter_.Bound(0), room);
    return Delivered(converter_.Flush(target), target, room);
}

/// The caller's room where `bound` frames fit into it for sure, and the spare room otherwise.
std::span<float> Decoder::RoomFor(std::size_t bound, std::span<float> room) {
    const std::size_t samples = bound * kChannels;
    if (samples <= room.size()) return room.first(samples);
    if (spare_.size() < samples) spare_.resize(samples);
    return std::span(spare_).first(samples);
}

/// Books `frames` that were written to `target`. Returns those among them that stand in the caller's room.
std::size_t Decoder::Delivered(std::size_t frames, std::span<float> target, std::span<float> room) {
    if (target.data() == room.data()) return frames;
    spareBegin_ = 0;
    spareEnd_ = frames * kChannels;
    return 0;
}

std::size_t Decoder::TakeSpare(std::span<float> room) {
    const std::size_t samples = std::min(room.size() / kChannels * kChannels, spareEnd_ - spareBegin_);
    std::copy_n(spare_.begin() + static_cast<std::ptrdiff_t>(spareBegin_), samples, room.begin());
    spareBegin_ += samples;
    return samples / kChannels;
}

std::optional<Frames> Decoder::Length() const {
    constexpr AVRational kOurs{1, kSampleRate};
    if (stream_->duration != AV_NOPTS_VALUE && stream_->duration > 0)
        return Frames{av_rescale_q(stream_->duration, stream_->time_base, kOurs)};
    if (input_->duration != AV_NOPTS_VALUE && input_->duration > 0)
        return Frames{av_rescale_q(input_->duration, AV_TIME_BASE_Q, kOurs)};
    return std::nullopt;
}

}  // namespace sorakaze::sound
