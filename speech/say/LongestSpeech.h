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

/// The beginning of a text that is far too long, up to the end of a word where there is one: more than the
/// fastest voice speaks in the longest time, and no more than takes a few seconds to make. A text of ordinary
/// length comes back whole.
std::string_view SpeakableBeginning(std::string_view text);

/// Where in the flow of speech a block of samples begins.
enum class Place { Word, Within };

/// Thrown by SpeechCutter when the time is up.
struct SpeechCut {};

/// Passes samples on up to the longest time. Its last seconds end with the first word or pause that ends in
/// them, or where the time does, in a short fade.
class SpeechCutter {
  public:
    static constexpr double kLongestSeconds = 120;

    using Sink = std::function<void(std::span<const std::int16_t>)>;
    SpeechCutter(int sampleRate, Sink sink);

    /// Throws SpeechCut, after its last samples have been passed on.
    void Write(std::span<const std::int16_t> samples, Place place);

  private:
    std::size_t WholeLength(std::span<const std::int16_t> samples, Place place);

    const Sink sink_;
    const std::size_t fade_;      ///< samples, like those that follow
    const std::size_t earliest_;  ///< a cut from here on
    const std::size_t latest_;
    const std::size_t pause_;
    std::size_t written_ = 0;
    std::size_t quiet_ = 0;  ///< quiet ones in a row
    std::vector<std::int16_t> fading_;
};

}  // namespace sorakaze::speech
