// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <fstream>

#include "player/AnnouncedText.h"
#include "player/EditionRemarks.h"
#include "player/SortNames.h"

namespace sorakaze::player {
namespace {

TEST(EditionRemarks, OfTheList) {
    std::ifstream file(REMARKS_FILE);
    int count = 0;
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line.starts_with('#')) continue;
        const auto tab = line.find('\t');
        const std::string title = line.substr(0, tab);
        EXPECT_EQ(WithoutEditionRemarks(title, NameKind::Title),
                  tab == std::string::npos ? title : line.substr(tab + 1));
        ++count;
    }
    EXPECT_GT(count, 100);
}

TEST(EditionRemarks, OfAlbumsAndHostileNames) {
    const std::pair<const char*, const char*> albums[] = {{"25 - Single", "25"},
                                                          {"Blue - EP", "Blue"},
                                                          {"Ten [Legacy Edition]", "Ten"},
                                                          {"Ten - Deluxe Edition", "Ten"},
                                                          {"Kid A [Special Collector's Edition]", "Kid A"},
                                                          {"The Singles - 1969", "The Singles - 1969"},
                                                          {"Live - EP", "Live"},
                                                          {"EP", "EP"}};
    for (const auto& [album, said] : albums) EXPECT_EQ(WithoutEditionRemarks(album, NameKind::Album), said);
    std::string brackets, dashes = "Song";
    for (int i = 0; i < 4000; ++i) {
        brackets += "[Mono";
        dashes += " - Mono";
    }
    EXPECT_EQ(WithoutEditionRemarks(brackets, NameKind::Title), brackets);
    EXPECT_EQ(WithoutEditionRemarks(dashes, NameKind::Title), "Song");
}

TEST(SortNames, AreSaidInTheOrderOfTheName) {
    const struct {
        const char *name, *sort, *said;
    } cases[] = {
        {"松任谷由実", "Matsutoya, Yumi", "Matsutoya Yumi"},
        {"宇多田ヒカル", "Utada, Hikaru", "Utada Hikaru"},
        {"久石譲", "Joe Hisaishi", "Joe Hisaishi"},
        {"김광석", "Kim, Kwang-seok", "Kim Kwang-seok"},
        {"マイケル・ジャクソン", "Jackson, Michael", "Michael Jackson"},
        {"ジョニ・ミッチェル", "Mitchell, Joni", "Joni Mitchell"},
        {"Виктор Цой", "Tsoi, Viktor", "Viktor Tsoi"},
        {"Цой Виктор", "Tsoi, Viktor", "Tsoi Viktor"},
        {"Μίκης Θεοδωράκης", "Theodorakis, Mikis", "Mikis Theodorakis"},
        {"ザ・ビートルズ", "Beatles, The", "The Beatles"},
        {"ディー・エルツテ", "Ärzte, Die", "Die Ärzte"},
        {"アース・ウィンド・アンド・ファイアー", "Earth, Wind & Fire", "Earth, Wind & Fire"},
        {"クロスビー・スティルス・ナッシュ&ヤング", "Crosby, Stills, Nash & Young",
         "Crosby, Stills, Nash & Young"},
        {"タイラー・ザ・クリエイター", "Tyler, The Creator", "Tyler, The Creator"},
        {"ピーター・ポール&マリー", "Peter, Paul and Mary", "Peter, Paul and Mary"},
        {"ナウ・ナウ", "Now, Now", "Now, Now"},
        {"サミー・デイヴィスJr.", "Davis, Sammy, Jr.", "Sammy Davis Jr."},
        {"ホール&オーツ", "Hall, Daryl & Oates, John", "Daryl Hall & John Oates"},
        {"東京事変", "Tokyo Jihen", "Tokyo Jihen"},
        {"夢", "", ""},
        {"夢", ", ", ", "},
    };
    for (const auto& [name, sort, said] : cases) EXPECT_EQ(SpokenSortName(sort, name), said) << name;
}

/// Of a record's texts "title|artist|album|titleSort|artistSort|albumSort".
TEST(AnnouncedText, IsWhatAPresenterSays) {
    const struct {
        TrackText text;
        const char* record;
    } cases[] = {
        {{"Help! - 2009 Remaster", "The Beatles", "Help! [Deluxe Edition]", "", "Beatles, The", ""},
         "Help!\tThe Beatles\tHelp!\t\t\t"},
        {{"Wall, The", "Beatles, The", "Live and Let, Die", "", "", ""},
         "The Wall\tThe Beatles\tLive and Let, Die\t\t\t"},
        {{"Halo", "Beyoncé", "I Am…", "", "Knowles, Beyoncé", ""}, "Halo\tBeyoncé\tI Am…\t\t\t"},
        {{"春よ、来い", "松任谷由実", "", "Haru yo, Koi [Remastered]", "Matsutoya, Yumi", ""},
         "春よ、来い\t松任谷由実\t\tHaru yo, Koi\tMatsutoya Yumi\t"},
        {{"(Nice Dream)", "(Sandy) Alex G", "(A) (B)", "", "", ""},
         "Nice Dream\t(Sandy) Alex G\t(A) (B)\t\t\t"},
        {{"()", "", "", "", "", ""}, "()\t\t\t\t\t"},
    };
    for (const auto& [text, record] : cases) EXPECT_EQ(AnnouncedText(text).Record(), record);
}

}  // namespace
}  // namespace sorakaze::player
