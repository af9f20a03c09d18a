// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "speech/japanese/Characters.h"
#include "tests/speech/japanese/TitleScore.h"

namespace sorakaze::japanese {
namespace {

TEST(Titles, AreReadAsAListenerWould) {
    const Reader reader{Dictionary()}, withoutLexicon{Dictionary(), UseLexicon::No};
    test::Score all, heldOut, heldOutWithout;
    for (const test::Title& title : test::Titles(TITLES_FILE)) {
        all.Add(title, reader);
        if (!title.heldOut) continue;
        heldOut.Add(title, reader);
        heldOutWithout.Add(title, withoutLexicon);
    }
    EXPECT_GE(all.Percent(), 97);
    EXPECT_LE(all.PercentSplit(), 2);
    EXPECT_GE(heldOut.Percent(), 94);
    EXPECT_GE(heldOutWithout.Percent(), 92);
}

}  // namespace
}  // namespace sorakaze::japanese
