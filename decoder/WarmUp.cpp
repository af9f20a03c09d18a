// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "decoder/WarmUp.h"

#include <pthread.h>

#include "sound/AvSupport.h"

namespace sorakaze::decoder {

void WarmUp() {
    sound::SilenceAvLogging();
    // The usual eight megabytes for each thread's stack would count as allocated.
    pthread_attr_t attributes;
    ::pthread_attr_init(&attributes);
    ::pthread_attr_setstacksize(&attributes, 1 << 20);
    ::pthread_setattr_default_np(&attributes);
    ::pthread_attr_destroy(&attributes);
    for (const AVCodecID id : {AV_CODEC_ID_MP3, AV_CODEC_ID_AAC, AV_CODEC_ID_VORBIS, AV_CODEC_ID_OPUS,
                               AV_CODEC_ID_FLAC, AV_CODEC_ID_PCM_S16LE, AV_CODEC_ID_PCM_S16BE}) {
        const AVCodec* const codec = avcodec_find_decoder(id);
        const sound::AvPointer<AVCodecContext> context(codec ? avcodec_alloc_context3(codec) : nullptr);
        if (!context) continue;
        context->sample_rate = 44100;
        av_channel_layout_default(&context->ch_layout, 2);
        avcodec_open2(context.get(), codec, nullptr);
    }
}

}  // namespace sorakaze::decoder
