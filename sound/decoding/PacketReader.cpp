// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/decoding/PacketReader.h"

namespace sorakaze::sound {
namespace {

/// A hopeless file ends after so many errors in a row; a good one with a damaged part goes on after
/// it.
constexpr int kMaxFailures = 4096;

/// Containers can't open other files or addresses.
int RefuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
    return AVERROR(EACCES);
}

}  // namespace

std::unique_ptr<PacketReader> PacketReader::Open(std::unique_ptr<InputFile> file, const std::string& name) {
    SilenceAvLogging();
    std::unique_ptr<PacketReader> reader(new PacketReader);
    reader->file_ = std::move(file);
    return reader->OpenInput(name) ? std::move(reader) : nullptr;
}

bool PacketReader::OpenInput(const std::string& name) {
    AVFormatContext* context = avformat_alloc_context();
    if (!context) return false;
    context->pb = file_->Io();
    context->io_open = &RefuseToOpen;
    context->protocol_whitelist = av_strdup("none");
    // Frees the context when it fails.
    if (avformat_open_input(&context, name.c_str(), nullptr, nullptr) < 0) return false;
    input_.reset(context);
    if (avformat_find_stream_info(context, nullptr) < 0) return false;

    const int index = av_find_best_stream(context, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (index < 0) return false;
    for (unsigned i = 0; i < context->nb_streams; ++i)
        context->streams[i]->discard = i == static_cast<unsigned>(index) ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    stream_ = context->streams[index];
    return true;
}

bool PacketReader::Read(AVPacket& packet) {
    for (int failures = 0; failures < kMaxFailures;) {
        const int result = av_read_frame(input_.get(), &packet);
        if (result >= 0 && packet.stream_index == stream_->index) return true;
        if (result >= 0)
            av_packet_unref(&packet);
        else if (result == AVERROR(EAGAIN) || result == AVERROR_INVALIDDATA)
            ++failures;
        else
            return false;
    }
    return false;
}

bool PacketReader::Seek(std::int64_t time) {
    return av_seek_frame(input_.get(), stream_->index, time, AVSEEK_FLAG_BACKWARD) >= 0;
}

AvPointer<AVCodecContext> PacketReader::MakeCodec() const {
    const AVCodec* codec = avcodec_find_decoder(stream_->codecpar->codec_id);
    AvPointer<AVCodecContext> context(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!context || avcodec_parameters_to_context(context.get(), stream_->codecpar) < 0) return nullptr;
    context->pkt_timebase = stream_->time_base;
    context->thread_count = 1;
    return avcodec_open2(context.get(), codec, nullptr) < 0 ? nullptr : std::move(context);
}

std::optional<Frames> PacketReader::Length() const {
    constexpr AVRational kOurs{1, kSampleRate};
    if (stream_->duration != AV_NOPTS_VALUE && stream_->duration > 0)
        return Frames{av_rescale_q(stream_->duration, stream_->time_base, kOurs)};
    if (input_->duration != AV_NOPTS_VALUE && input_->duration > 0)
        return Frames{av_rescale_q(input_->duration, av_get_time_base_q(), kOurs)};
    return std::nullopt;
}

}  // namespace sorakaze::sound
