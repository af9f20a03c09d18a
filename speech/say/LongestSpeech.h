// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// No sentence of a show is longer than about two minutes, whatever a title holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sorakaze::speech {

/// The first part of a text that is far too long, up to the end of a word if possible: more than the fastest
/// voice speaks in the longest time, and no more than takes a few seconds to make. Returns a text of ordinary
/// length whole.
std::string_view SpeakablePrefix(std::string_view text);

/// Whether a block of samples starts with a word.
enum class BlockStart { Word, WithinWord };

/// Thrown by SpeechCutter when the time is over.
struct SpeechCut {};

/// Passes samples on up to the longest time. Speech that is longer ends with a short fade at the end of a
/// word or at a pause in the last seconds, or when the time is over.
class SpeechCutter {
  public:
    static constexpr double kLongestSeconds = 120;

    using Sink = std::function<void(std::span<const std::int16_t>)>;
    SpeechCutter(int sampleRate, Sink sink);

    /// Throws SpeechCut, after its last samples have been passed on.
    void Write(std::span<const std::int16_t> samples, BlockStart start);

  private:
    std::size_t WholeLength(std::span<const std::int16_t> samples, BlockStart start);

    const Sink sink_;
    const std::size_t fade_;      ///< samples, as are the next ones
    const std::size_t earliest_;  ///< possible cut
    const std::size_t latest_;
    const std::size_t pause_;
    std::size_t written_ = 0;
    std::size_t quiet_ = 0;  ///< quiet ones in a row
    std::vector<std::int16_t> fading_;
};

}  // namespace sorakaze::speech
