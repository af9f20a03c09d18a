// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/voices/FliteNames.h"

#include <algorithm>
#include <iterator>

namespace sorakaze::speech {
namespace {

struct Person {
    std::string_view name;  ///< folded
    const char* voice;
    int pitch;  ///< percent of the voice's own, as the others
    int range;
    int size;
    int stretch;
};

constexpr Person kPeople[] = {
    // American English
    {"samantha", "slt", 100, 100, 96, 124},
    {"victoria", "slt", 116, 110, 92, 122},
    {"ava", "slt", 86, 92, 92, 127},
    {"emma", "slt", 116, 105, 88, 121},
    {"allison", "slt", 86, 96, 88, 126},
    {"susan", "slt", 86, 100, 97, 123},
    {"vicki", "slt", 98, 110, 88, 125},
    {"kathy", "slt", 98, 92, 92, 124},
    {"agnes", "slt", 116, 105, 97, 122},
    {"emily", "slt", 92, 96, 94, 127},
    {"jenny", "slt", 104, 100, 90, 121},
    {"jessica", "slt", 104, 110, 95, 126},
    {"jane", "slt", 110, 92, 94, 123},
    {"julia", "slt", 92, 105, 90, 125},
    {"mary", "slt", 92, 96, 97, 124},
    {"nancy", "slt", 98, 100, 90, 122},
    {"linda", "slt", 98, 110, 95, 127},
    {"lisa", "slt", 110, 92, 97, 121},
    {"nicky", "slt", 92, 105, 95, 126},
    {"zoe", "slt", 86, 96, 94, 123},
    {"alex", "rms", 100, 100, 100, 104},
    {"tom", "rms", 84, 110, 91, 102},
    {"david", "rms", 114, 92, 91, 107},
    {"michael", "rms", 84, 105, 106, 101},
    {"steve", "rms", 114, 96, 106, 106},
    {"bruce", "rms", 96, 100, 94, 103},
    {"evan", "rms", 114, 110, 100, 105},
    {"nathan", "rms", 102, 92, 106, 104},
    {"aaron", "rms", 84, 105, 100, 102},
    {"adam", "rms", 108, 96, 97, 107},
    {"brian", "rms", 108, 100, 103, 101},
    {"bob", "rms", 90, 110, 97, 106},
    {"charles", "rms", 90, 92, 103, 103},
    {"chris", "rms", 102, 105, 91, 105},
    {"eric", "rms", 102, 96, 97, 104},
    {"frank", "rms", 108, 100, 100, 102},
    {"jack", "rms", 102, 110, 103, 107},
    {"james", "rms", 96, 92, 97, 101},
    {"jim", "rms", 90, 105, 100, 106},
    {"joe", "rms", 96, 96, 103, 103},
    {"john", "rms", 102, 100, 94, 105},
    {"mark", "rms", 96, 110, 106, 104},
    {"mike", "rms", 108, 92, 94, 102},
    {"paul", "rms", 114, 105, 97, 107},
    {"peter", "rms", 114, 96, 103, 101},
    {"robert", "rms", 108, 100, 106, 106},
    {"sam", "rms", 96, 110, 91, 103},
    {"ralph", "rms", 80, 90, 90, 108},
    {"fred", "kal16", 100, 40, 100, 123},
    {"albert", "kal16", 84, 90, 93, 126},
    {"junior", "slt", 122, 110, 99, 122},
    {"princess", "slt", 126, 120, 100, 123},
    // English of the British Isles and elsewhere
    {"kate", "slt", 110, 100, 90, 125},
    {"serena", "slt", 104, 110, 88, 124},
    {"stephanie", "slt", 104, 92, 92, 122},
    {"martha", "slt", 110, 105, 95, 127},
    {"lucy", "slt", 116, 96, 94, 121},
    {"sophie", "slt", 86, 100, 90, 126},
    {"charlotte", "slt", 92, 110, 88, 123},
    {"fiona", "slt", 92, 92, 92, 125},
    {"moira", "slt", 86, 105, 95, 124},
    {"karen", "slt", 116, 96, 90, 122},
    {"catherine", "slt", 110, 100, 88, 127},
    {"matilda", "slt", 110, 110, 92, 121},
    {"tessa", "slt", 116, 92, 95, 126},
    {"veena", "slt", 104, 105, 94, 123},
    {"daniel", "awb", 100, 100, 100, 116},
    {"oliver", "awb", 88, 110, 92, 114},
    {"george", "awb", 112, 92, 92, 119},
    {"arthur", "awb", 88, 105, 104, 113},
    {"harry", "awb", 112, 96, 104, 118},
    {"simon", "awb", 96, 100, 96, 115},
    {"malcolm", "awb", 104, 110, 96, 117},
    {"jamie", "awb", 88, 92, 100, 116},
    {"sean", "awb", 112, 105, 100, 114},
    {"lee", "awb", 96, 96, 104, 119},
    {"gordon", "awb", 104, 100, 104, 113},
    {"rishi", "awb", 96, 110, 92, 118},
};

}  // namespace

std::optional<FliteLook> FindFliteLook(std::string_view folded) {
    const auto* person = std::find_if(std::begin(kPeople), std::end(kPeople),
                                      [&](const Person& one) { return one.name == folded; });
    if (person == std::end(kPeople)) return {};
    constexpr double kPercent = 0.01;
    return FliteLook{person->voice, person->pitch * kPercent, person->range * kPercent,
                     person->size * kPercent, person->stretch * kPercent};
}

}  // namespace sorakaze::speech
