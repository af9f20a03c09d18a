// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The one place that includes the decoding and encoding libraries: owners of their objects, and no output on
// the console.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

#include <memory>
#include <string>

namespace sorakaze::sound {

struct AvFree {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(SwrContext* context) const { swr_free(&context); }
    void operator()(AVFormatContext* context) const { avformat_free_context(context); }
    void operator()(AVIOContext* context) const;
};

/// For format contexts that read: those are closed, not only freed.
struct AvCloseInput {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};

template <typename T>
using AvPointer = std::unique_ptr<T, AvFree>;
using AvInputPointer = std::unique_ptr<AVFormatContext, AvCloseInput>;

/// The libraries write to standard error by default; a bad file is no news to the user. Any thread, any
/// number of times.
void SilenceAvLogging();

/// The library's one-line text for an error number.
std::string AvErrorText(int error);

}  // namespace sorakaze::sound
