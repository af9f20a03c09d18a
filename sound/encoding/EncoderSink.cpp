// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cstring>
#include <exception>
#include <string>

#include "sound/AvSupport.h"
#include "sound/Frames.h"
#include "sound/encoding/Int16Converter.h"
#include "sound/encoding/OutputFile.h"
#include "sound/encoding/SoundFileWriter.h"
#include "sound/encoding/SoundSink.h"

namespace sorakaze::sound {
namespace {

constexpr int kIoBytes = 256 * 1024;
constexpr int kFreeFrameSize = 4096;  // for encoders that take any

class EncoderSink final : public SoundSink {
  public:
    EncoderSink(const std::filesystem::path& file, const Encoding& encoding, Dither dither)
        : file_(file),
          converter_(dither),
          encoding_(encoding),
          container_(MakeContainer()),
          io_(MakeIo()),
          codec_(OpenEncoder()) {
        container_->pb = io_.get();
        packet_.reset(av_packet_alloc());
        Check(packet_ ? 0 : AVERROR(ENOMEM));
        stream_ = avformat_new_stream(container_.get(), nullptr);
        Check(stream_ ? 0 : AVERROR(ENOMEM));
        Check(avcodec_parameters_from_context(stream_->codecpar, codec_.get()));
        stream_->time_base = codec_->time_base;
        frameSize_ = codec_->frame_size > 0 ? codec_->frame_size : kFreeFrameSize;
        // Where the container has such a clock, it states the sound's end by it: to the frame, not to the
        // millisecond.
        if (container_->oformat->priv_class)
            av_opt_set_int(container_->priv_data, "movie_timescale", kSampleRate, 0);
        Check(avformat_write_header(container_.get(), nullptr));
    }

    void Write(std::span<const float> interleaved) override {
        while (!interleaved.empty()) {
            if (!frame_) BeginFrame();
            const int count = static_cast<int>(std::min<std::size_t>(
                static_cast<std::size_t>(frameSize_ - filled_), interleaved.size() / kChannels));
            Put(interleaved.data(), count);
            filled_ += count;
            if (filled_ == frameSize_) SendFrame();
            interleaved = interleaved.subspan(static_cast<std::size_t>(count) * kChannels);
        }
    }

    void Finish() override {
        if (filled_ > 0) SendFrame();
        Check(avcodec_send_frame(codec_.get(), nullptr));
        TakePackets();
        Check(av_write_trailer(container_.get()));
        avio_flush(io_.get());
        Check(io_->error);
        file_.Publish();
    }

  private:
    AvPointer<AVFormatContext> MakeContainer() {
        SilenceAvLogging();
        AVFormatContext* context = nullptr;
        Check(avformat_alloc_output_context2(&context, nullptr, encoding_.container, nullptr));
        // The same sound gives the same bytes: no dates, no random serial numbers, no library versions.
        context->flags |= AVFMT_FLAG_BITEXACT | AVFMT_FLAG_CUSTOM_IO;
        return AvPointer<AVFormatContext>(context);
    }

    AvPointer<AVIOContext> MakeIo() {
        auto* buffer = static_cast<unsigned char*>(av_malloc(kIoBytes));
        Check(buffer ? 0 : AVERROR(ENOMEM));
        AvPointer<AVIOContext> io(
            avio_alloc_context(buffer, kIoBytes, 1, this, nullptr, &WriteBytes, &SeekTo));
        if (!io) av_free(buffer);
        Check(io ? 0 : AVERROR(ENOMEM));
        return io;
    }

    AvPointer<AVCodecContext> OpenEncoder() {
        const AVCodec* encoder = avcodec_find_encoder_by_name(encoding_.encoder);
        if (!encoder)
            throw SoundFileError(std::string("The encoding library was built without ") + encoding_.encoder +
                                 ", which writes " + std::string(encoding_.ending) +
                                 " files. Choose another format.");
        AvPointer<AVCodecContext> codec(avcodec_alloc_context3(encoder));
        Check(codec ? 0 : AVERROR(ENOMEM));
        codec->sample_rate = kSampleRate;
        codec->time_base = {1, kSampleRate};
        codec->sample_fmt = ChooseFormat(*encoder);
        if (encoding_.quality >= 0) {
            codec->flags |= AV_CODEC_FLAG_QSCALE;
            codec->global_quality = encoding_.quality * FF_QP2LAMBDA;
        } else {
            codec->bit_rate = encoding_.bitRate;
        }
        codec->flags |= AV_CODEC_FLAG_BITEXACT;
        codec->thread_count = 1;
        if (container_->oformat->flags & AVFMT_GLOBALHEADER) codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        const AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
        Check(av_channel_layout_copy(&codec->ch_layout, &stereo));
        Check(avcodec_open2(codec.get(), encoder, nullptr));
        return codec;
    }

    /// 16-bit integers for lossless encoders, floats for the others.
    AVSampleFormat ChooseFormat(const AVCodec& encoder) const {
        for (const auto wanted : {AV_SAMPLE_FMT_FLT, AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_S16})
            for (const auto* format = encoder.sample_fmts; format && *format != AV_SAMPLE_FMT_NONE; ++format)
                if (*format == wanted) return wanted;
        return AV_SAMPLE_FMT_S16;
    }

    void BeginFrame() {
        frame_.reset(av_frame_alloc());
        Check(frame_ ? 0 : AVERROR(ENOMEM));
        frame_->nb_samples = frameSize_;
        frame_->format = codec_->sample_fmt;
        frame_->sample_rate = kSampleRate;
        frame_->pts = sent_;
        Check(av_channel_layout_copy(&frame_->ch_layout, &codec_->ch_layout));
        Check(av_frame_get_buffer(frame_.get(), 0));
        filled_ = 0;
    }

    void Put(const float* from, int count) {
        const auto samples = static_cast<std::size_t>(count) * kChannels;
        const auto at = static_cast<std::size_t>(filled_);
        if (codec_->sample_fmt == AV_SAMPLE_FMT_S16) {
            converter_.Convert({from, samples},
                               reinterpret_cast<std::int16_t*>(frame_->data[0]) + at * kChannels);
        } else if (codec_->sample_fmt == AV_SAMPLE_FMT_FLT) {
            std::memcpy(reinterpret_cast<float*>(frame_->data[0]) + at * kChannels, from,
                        samples * sizeof(float));
        } else {
            float* const left = reinterpret_cast<float*>(frame_->data[0]) + at;
            float* const right = reinterpret_cast<float*>(frame_->data[1]) + at;
            for (int i = 0; i < count; ++i) {
                left[i] = from[2 * i];
                right[i] = from[2 * i + 1];
            }
        }
    }

    void SendFrame() {
        frame_->nb_samples = filled_;
        sent_ += filled_;
        filled_ = 0;
        const AvPointer<AVFrame> frame = std::move(frame_);
        Check(avcodec_send_frame(codec_.get(), frame.get()));
        TakePackets();
    }

    void TakePackets() {
        for (;;) {
            const int result = avcodec_receive_packet(codec_.get(), packet_.get());
            if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return;
            Check(result);
            packet_->stream_index = stream_->index;
            av_packet_rescale_ts(packet_.get(), codec_->time_base, stream_->time_base);
            Check(av_interleaved_write_frame(container_.get(), packet_.get()));
            Check(io_->error);
        }
    }

    /// An error of the file, with its advice, comes before the library's view of it.
    void Check(int result) {
        if (fileError_) std::rethrow_exception(fileError_);
        if (result >= 0) return;
        throw SoundFileError("Can't write the sound file " + file_.Name().string() + ": " +
                             AvErrorText(result) + ". Choose another format or another place.");
    }

    // Nothing may be thrown through the library, so errors wait for the next Check.
    static int WriteBytes(void* self, std::uint8_t* data, int size) {
        return static_cast<EncoderSink*>(self)->Guard([&](OutputFile& file) {
            file.Write(data, static_cast<std::size_t>(size));
            return std::int64_t{size};
        });
    }
    static std::int64_t SeekTo(void* self, std::int64_t offset, int whence) {
        return static_cast<EncoderSink*>(self)->Guard([&](OutputFile& file) {
            if (whence & AVSEEK_SIZE) return file.Size();
            if (whence == SEEK_CUR) offset += file.Position();
            if (whence == SEEK_END) offset += file.Size();
            file.Seek(offset);
            return offset;
        });
    }
    template <typename Operation>
    auto Guard(Operation operation) -> decltype(operation(std::declval<OutputFile&>())) {
        try {
            if (!fileError_) return operation(file_);
        } catch (const SoundFileError&) {
            fileError_ = std::current_exception();
        }
        return AVERROR(EIO);
    }

    OutputFile file_;
    Int16Converter converter_;
    const Encoding encoding_;
    std::exception_ptr fileError_;
    AvPointer<AVFormatContext> container_;
    AvPointer<AVIOContext> io_;
    AvPointer<AVCodecContext> codec_;
    AvPointer<AVPacket> packet_;
    AvPointer<AVFrame> frame_;  ///< being filled; empty between frames
    AVStream* stream_ = nullptr;
    int frameSize_ = 0;
    int filled_ = 0;
    std::int64_t sent_ = 0;
};

}  // namespace

std::unique_ptr<SoundSink> MakeEncoderSink(const std::filesystem::path& file, const Encoding& encoding,
                                           Dither dither) {
    return std::make_unique<EncoderSink>(file, encoding, dither);
}

}  // namespace sorakaze::sound
