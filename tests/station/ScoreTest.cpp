// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <array>
#include <stdexcept>

#include "station/synth/Score.h"

namespace sorakaze::station {
namespace {

TEST(Score, NotesAreRead) {
    std::vector<std::array<double, 4>> notes;
    for (const auto& note : Notes("C4:2 Eb4+F#4:.5^ | r:1 A4, B-1", 4))
        notes.push_back({note.beat, note.beats, note.pitch, note.velocity});
    EXPECT_EQ(notes, (std::vector<std::array<double, 4>>{{4, 2, 60, 0.75},
                                                         {6, 0.5, 63, 0.95},
                                                         {6, 0.5, 66, 0.95},
                                                         {7.5, 1, 69, 0.5},
                                                         {8.5, 1, 11, 0.75}}));
    for (const char* wrong : {"H4", "C", "C4:", "C4:x", "4", "C4+", "^"}) {
        EXPECT_THROW(Notes(wrong), std::invalid_argument) << wrong;
    }
    EXPECT_THROW(Steps("x.z", 0.5), std::invalid_argument);
}

TEST(Score, TempoSwingsAndSlows) {
    const Tempo swing{60, 2.0 / 3};
    EXPECT_DOUBLE_EQ(swing.Seconds(3), 3);
    EXPECT_NEAR(swing.Seconds(3.5), 3 + 2.0 / 3, 1e-9);
    const Tempo slowing{60, 0.5, 4, 0.5};
    EXPECT_DOUBLE_EQ(slowing.Seconds(4), 4);
    EXPECT_DOUBLE_EQ(slowing.Seconds(6), 7);
}

}  // namespace
}  // namespace sorakaze::station
