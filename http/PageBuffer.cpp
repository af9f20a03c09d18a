// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "http/PageBuffer.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "base/Utf8.h"

namespace sorakaze::http {
namespace {

/// The last place in the text that is between two characters, whatever bytes will follow.
std::size_t LastBoundary(std::string_view text) {
    constexpr std::size_t kMostContinuations = 3;
    std::size_t lead = text.size();
    std::size_t continuations = 0;
    while (lead > 0 && utf8::IsContinuation(static_cast<unsigned char>(text[lead - 1]))) {
        if (++continuations == kMostContinuations) return text.size();
        --lead;
    }
    return lead == 0 ? 0 : lead - 1;
}

}  // namespace

std::int32_t PageBuffer::Length() {
    const std::string_view uncounted = std::string_view(bytes_).substr(counted_);
    const std::size_t boundary = LastBoundary(uncounted);
    characters_ += utf8::CountCharacters(uncounted.substr(0, boundary));
    counted_ += boundary;
    const std::size_t length = characters_ + utf8::CountCharacters(uncounted.substr(boundary));
    return static_cast<std::int32_t>(std::min<std::size_t>(length, std::numeric_limits<std::int32_t>::max()));
}

}  // namespace sorakaze::http
