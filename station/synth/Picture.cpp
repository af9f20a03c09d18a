// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "station/synth/Picture.h"

#include <algorithm>
#include <stdexcept>

#include "sound/AvSupport.h"

namespace sorakaze::station {
namespace {

/// JPEG's quality in the encoder's scale: 2 is the best, 31 the worst.
constexpr int kQuality = 3;

std::uint8_t Byte(double value) {
    return static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
}

void FillRgb(AVFrame& frame, const Picture& picture) {
    const std::size_t row = static_cast<std::size_t>(picture.side) * 3;
    for (int y = 0; y < picture.side; ++y) {
        std::copy_n(picture.pixels.data() + row * static_cast<std::size_t>(y), row,
                    frame.data[0] + y * frame.linesize[0]);
    }
}

/// Luminance and the two colour differences, as JPEG has them.
void FillYuv(AVFrame& frame, const Picture& picture) {
    const std::uint8_t* pixel = picture.pixels.data();
    for (int y = 0; y < picture.side; ++y) {
        for (int x = 0; x < picture.side; ++x, pixel += 3) {
            const double red = pixel[0], green = pixel[1], blue = pixel[2];
            frame.data[0][y * frame.linesize[0] + x] = Byte(0.299 * red + 0.587 * green + 0.114 * blue);
            frame.data[1][y * frame.linesize[1] + x] =
                Byte(128 - 0.168736 * red - 0.331264 * green + 0.5 * blue);
            frame.data[2][y * frame.linesize[2] + x] =
                Byte(128 + 0.5 * red - 0.418688 * green - 0.081312 * blue);
        }
    }
}

void Check(int result, const char* what) {
    if (result < 0) throw std::runtime_error(std::string("can't encode a cover: ") + what);
}

}  // namespace

EncodedPicture Encode(const Picture& picture, PictureFormat format) {
    const bool png = format == PictureFormat::Png;
    const AVCodec* codec = avcodec_find_encoder(png ? AV_CODEC_ID_PNG : AV_CODEC_ID_MJPEG);
    if (!codec) throw std::runtime_error("can't encode a cover: the codec library has no encoder for it");
    const sound::AvPointer<AVCodecContext> context(avcodec_alloc_context3(codec));
    const sound::AvPointer<AVFrame> frame(av_frame_alloc());
    const sound::AvPointer<AVPacket> packet(av_packet_alloc());
    context->width = frame->width = picture.side;
    context->height = frame->height = picture.side;
    context->pix_fmt = png ? AV_PIX_FMT_RGB24 : AV_PIX_FMT_YUVJ444P;
    frame->format = context->pix_fmt;
    context->time_base = {1, 1};
    context->thread_count = 1;
    context->flags |= AV_CODEC_FLAG_BITEXACT;
    if (!png) {
        context->flags |= AV_CODEC_FLAG_QSCALE;
        context->global_quality = frame->quality = kQuality * FF_QP2LAMBDA;
    }
    Check(av_frame_get_buffer(frame.get(), 0), "no memory");
    if (png) {
        FillRgb(*frame, picture);
    } else {
        FillYuv(*frame, picture);
    }
    Check(avcodec_open2(context.get(), codec, nullptr), "the encoder doesn't open");
    Check(avcodec_send_frame(context.get(), frame.get()), "the encoder takes no picture");
    avcodec_send_frame(context.get(), nullptr);
    Check(avcodec_receive_packet(context.get(), packet.get()), "the encoder gives nothing");
    return {std::string(reinterpret_cast<const char*>(packet->data), static_cast<std::size_t>(packet->size)),
            png ? "image/png" : "image/jpeg"};
}

}  // namespace sorakaze::station
