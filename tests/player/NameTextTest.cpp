// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "player/NameText.h"

namespace sorakaze::player {
namespace {

struct Case {
    const char* file;  ///< below the music folder
    const char* text;  ///< "title|artist|album"
    std::vector<std::string> beside = {};
};

const Case kCases[] = {
    // Numbers.
    {"01 - Nick Drake - Pink Moon.mp3", "Pink Moon|Nick Drake|"},
    {"01. Pink Moon.mp3", "Pink Moon||"},
    {"01_pink_moon.ogg", "pink moon||"},
    {"01-Pink Moon.mp3", "Pink Moon||"},
    {"01.Pink Moon.mp3", "Pink Moon||"},
    {"12. Bla Bla Bla.mp3", "Bla Bla Bla||"},
    {"12) Title.mp3", "Title||"},
    {"1-07 Clair de Lune.flac", "Clair de Lune||"},
    {"2.11 Finale.flac", "Finale||"},
    {"12 Drummers.mp3", "Drummers||", {"10 Lords.mp3", "11 Pipers.mp3", "12 Drummers.mp3"}},
    {"7 Swans.mp3", "Swans||", {"6 Geese.mp3", "7 Swans.mp3", "8 Maids.mp3", "5 Rings.mp3"}},
    {"10 - Eleanor Rigby.mp3", "Eleanor Rigby||"},
    {"Track 03 - Karma Police.mp3", "Karma Police||"},
    {"03 - 03 - Karma Police.mp3", "03 - Karma Police||"},
    // Numbers that belong to the name.
    {"99 Luftballons.mp3", "99 Luftballons||"},
    {"99 Luftballons.mp3",
     "99 Luftballons||",
     {"99 Luftballons.mp3", "Africa.mp3", "98 Degrees - Una Noche.mp3"}},
    {"05 99 Luftballons.mp3", "99 Luftballons||"},
    {"1979.mp3", "1979||"},
    {"07 - 1979.mp3", "1979||"},
    {"01.mp3", "01||"},
    {"Track 07.mp3", "Track 07||"},
    {"2 Unlimited - No Limit.mp3", "No Limit|2 Unlimited|"},
    {"50 Cent - In da Club.mp3",
     "In da Club|50 Cent|",
     {"50 Cent - Candy Shop.mp3", "50 Cent - P.I.M.P..mp3"}},
    {"03 - 50 Cent - In da Club.mp3", "In da Club|50 Cent|"},
    {"3 Doors Down - Kryptonite.mp3", "Kryptonite|3 Doors Down|"},
    {"4 Non Blondes - What's Up.mp3", "What's Up|4 Non Blondes|"},
    {"10cc - I'm Not in Love.mp3", "I'm Not in Love|10cc|"},
    {"21 Guns.mp3", "21 Guns||"},
    {"007 James Bond Theme.mp3", "007 James Bond Theme||"},
    {"2-4-6-8 Motorway.mp3", "2-4-6-8 Motorway||"},
    {"50-50.mp3", "50-50||"},
    {"9. Sinfonie.mp3", "9. Sinfonie||"},
    {"1999 - Prince.mp3", "1999 - Prince||"},
    {"7 Seconds.mp3", "7 Seconds||"},
    {"867-5309 Jenny.mp3", "867-5309 Jenny||"},
    // Dashes.
    {"a-ha - Take On Me.mp3", "Take On Me|a-ha|"},
    {"AC-DC - Thunderstruck.mp3", "Thunderstruck|AC-DC|"},
    {"AC_DC - Thunderstruck.mp3", "Thunderstruck|AC DC|"},
    {"Jay-Z – 99 Problems.mp3", "99 Problems|Jay-Z|"},
    {"Ke$ha - TiK ToK.mp3", "TiK ToK|Ke$ha|"},
    {"M83 - Midnight City.mp3", "Midnight City|M83|"},
    {"Queen - Under Pressure - Live.mp3", "Under Pressure - Live|Queen|"},
    {"Radiohead - OK Computer - 06 - Karma Police.mp3", "Karma Police|Radiohead|OK Computer"},
    {"Radiohead - 06 - Karma Police.mp3", "Karma Police|Radiohead|"},
    {"Symphony No. 5 - Allegro con brio.mp3", "Symphony No. 5 - Allegro con brio||"},
    {"Uptown-Downtown.mp3", "Uptown-Downtown||"},
    {" - .mp3", "-||"},
    {"Artist - .mp3", "Artist -||"},
    // Underscores and remarks on the file.
    {"artist_title_(hd).ogg", "artist title||"},
    {"daft_punk_-_around_the_world.mp3", "around the world|daft punk|"},
    {"Adele - Hello (Official Video) [HD].m4a", "Hello|Adele|"},
    {"Adele - Hello [aB3-dQw4w9W].m4a", "Hello|Adele|"},
    {"Adele - Hello (Live).m4a", "Hello (Live)|Adele|"},
    {"(hd).ogg", "(hd)||"},
    {"曲_(HD).ogg", "曲||"},
    {"02 東京 - 夜.ogg", "夜|東京|"},
    {"Vol. 2", "Vol. 2||"},
    {"A.B\tc.mp3", "A.B c||"},
    // Folders.
    {"Nick Drake/Pink Moon/01 Pink Moon.flac", "Pink Moon|Nick Drake|Pink Moon"},
    {"Nick Drake/1972 - Pink Moon (1972) [FLAC]/CD 1/01 Road.flac", "Road|Nick Drake|Pink Moon"},
    {"Rock/Nick Drake/Pink Moon/01 - Nick Drake - Road.flac", "Road|Nick Drake|Pink Moon"},
    {"Nick Drake/Pink Moon/01 - Road - Live.flac", "Road - Live|Nick Drake|Pink Moon"},
    {"Nick Drake/Pink Moon/Road.flac", "Road||"},
    {"Queen - Jazz/04 Bicycle Race.mp3", "Bicycle Race|Queen|Jazz"},
    {"Prince/1999/01 1999.mp3", "1999|Prince|1999"},
    {"Various Artists/Summer/01 - Prince - Kiss.mp3", "Kiss|Prince|Summer"},
    {"Mixes/Summer/01 - Prince - Kiss.mp3", "Kiss|Prince|Summer", {"02 - Abba - Waterloo.mp3"}},
    {"Party/Summer/01 - Prince - Kiss.mp3", "Kiss|Prince|Summer", {"02 - Abba - Waterloo.mp3"}},
    {"Unknown Artist/Unknown Album/01 Kiss.mp3", "Kiss||"},
    {"Summer/01 Kiss.mp3", "Kiss||"},
    {"../elsewhere/Summer/01 Kiss.mp3", "Kiss||"},
};

TEST(NameText, IsWhatAPersonWouldSay) {
    for (const Case& c : kCases) {
        const TrackText text = TextFromPath(std::filesystem::path("/home/me/Music") / c.file,
                                            "/home/me/Music", [&] { return c.beside; });
        EXPECT_EQ(text.title + '|' + text.artist + '|' + text.album, c.text) << c.file;
    }
    EXPECT_EQ(TextFromPath("/home/me/Music/01 Kiss.mp3", {}, {}).artist, "");
}

}  // namespace
}  // namespace sorakaze::player
