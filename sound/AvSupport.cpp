// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "sound/AvSupport.h"

#include <array>

namespace sorakaze::sound {

void AvFree::operator()(AVIOContext* context) const {
    // The library may have replaced the buffer by a larger one, so the context's own pointer is the one to
    // free.
    av_freep(&context->buffer);
    avio_context_free(&context);
}

void SilenceAvLogging() {
    static const bool done = [] {
        av_log_set_level(AV_LOG_QUIET);
        return true;
    }();
    static_cast<void>(done);
}

std::string AvErrorText(int error) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(error, text.data(), text.size());
    return text.data();
}

}  // namespace sorakaze::sound
