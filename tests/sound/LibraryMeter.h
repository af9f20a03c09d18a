// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// What libebur128 says of a sound: the measure that the project's own meters are held against.
#pragma once

#include <ebur128.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <span>

#include "sound/Frames.h"
#include "sound/Measurement.h"

namespace sorakaze::sound::testing {

class LibraryMeter {
  public:
    explicit LibraryMeter(std::span<const float> interleaved) {
        EXPECT_EQ(ebur128_add_frames_float(state_.get(), interleaved.data(), interleaved.size() / kChannels),
                  EBUR128_SUCCESS);
    }

    double Integrated() const {  ///< LUFS
        return std::max(Ask(ebur128_loudness_global), double{kSilentLoudness});
    }
    double Range() const { return Ask(ebur128_loudness_range); }  ///< LU
    double TruePeak() const {                                     ///< a factor
        double left = 0, right = 0;
        ebur128_true_peak(state_.get(), 0, &left);
        ebur128_true_peak(state_.get(), 1, &right);
        return std::max(left, right);
    }

  private:
    double Ask(int (*ask)(ebur128_state*, double*)) const {
        double value = 0;
        EXPECT_EQ(ask(state_.get(), &value), EBUR128_SUCCESS);
        return value;
    }

    struct Destroy {
        void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
    };
    std::unique_ptr<ebur128_state, Destroy> state_{
        ebur128_init(kChannels, kSampleRate, EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK)};
};

}  // namespace sorakaze::sound::testing
