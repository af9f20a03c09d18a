// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <iconv.h>

#include "player/ForeignText.h"

namespace sorakaze::player {
namespace {

std::string Encoded(std::string text, const char* encoding) {
    std::string bytes(text.size() * 2, '\0');
    char* from = text.data();
    char* to = bytes.data();
    std::size_t left = text.size(), room = bytes.size();
    const iconv_t conversion = ::iconv_open(encoding, "UTF-8");
    EXPECT_EQ(::iconv(conversion, &from, &left, &to, &room), 0u) << text << ' ' << encoding;
    ::iconv_close(conversion);
    bytes.resize(bytes.size() - room);
    return bytes;
}

const struct {
    const char* encoding;
    std::vector<std::string> names;
} kNames[] = {
    {"CP1252",
     {"Björk",
      "Sigur Rós",
      "Motörhead",
      "Mötley Crüe",
      "Céline Dion",
      "Beyoncé",
      "Édith Piaf",
      "Die Ärzte",
      "Für Elise",
      "Größe",
      "Ænima",
      "Ágætis byrjun",
      "Hoppípolla",
      "Þú",
      "Ég anda",
      "À la claire",
      "Ça ira",
      "Désenchantée",
      "Señorita",
      "¿Dónde estás?",
      "¡Viva!",
      "Corazón",
      "São Paulo",
      "Canção",
      "Väinämöinen",
      "Hää",
      "Mikä päivä",
      "Øresund",
      "Blå tåg",
      "Skål",
      "Don’t Stop",
      "“Heroes”",
      "Rock – Live",
      "Naïve",
      "Zoë",
      "Über den Wolken",
      "Grüße",
      "Ñandú",
      "Été 67",
      "Où es-tu",
      "Noël",
      "Œuvres",
      "Jóga",
      "Médúlla",
      "Trøllabundin",
      "Köln Concert",
      "20° unter Null",
      "ÜBERALL",
      "MÄNNER",
      "ÄÖÜ",
      "É",
      "Fräulein Süß",
      "Líf á Íslandi",
      "Ó borg mín borg"}},
    {"CP1251",
     {"Кино", "КИНО", "Группа крови", "Земфира", "Хочешь?", "Аквариум", "Наутилус Помпилиус",
      "Мы ждём перемен", "Высоцкий - Кони привередливые", "ДДТ", "Что такое осень", "Алиса", "Мой рок-н-ролл",
      "Чайф", "Подмосковные вечера", "Калинка", "«Звезда по имени Солнце»", "Пикник - Иероглиф",
      "Король и Шут"}},
    {"EUC-KR",
     {"사랑", "소녀시대", "강남스타일", "이문세", "조용필 - 단발머리", "빅뱅", "거짓말", "봄날",
      "서태지와 아이들", "김광석 - 서른 즈음에", "아이유", "너의 의미", "좋은 날 (Good Day)", "벚꽃 엔딩",
      "난 알아요"}},
    {"GBK",
     {"月亮代表我的心", "邓丽君", "周杰伦", "青花瓷", "王菲 - 红豆", "陈奕迅", "十年", "朋友", "海阔天空",
      "光辉岁月", "甜蜜蜜", "张学友 - 吻别", "崔健 - 一无所有", "双截棍 (Live)", "童年"}},
    {"EUC-JP", {"さくら", "東京", "宇多田ヒカル", "雪の華", "夜空", "椎名林檎", "恋 (Single)"}},
    {"CP932", {"さくら", "東京", "宇多田ヒカル", "愛", "雪の華", "椎名林檎 - 歌舞伎町の女王"}},
};

TEST(TextEncoding, OfNamesIsTold) {
    for (const auto& [encoding, names] : kNames) {
        for (const std::string& name : names) EXPECT_EQ(CleanLine(Encoded(name, encoding)), name) << encoding;
    }
    // As a tag of a fixed length cuts it off.
    EXPECT_EQ(CleanLine(Encoded("月亮代表我的心", "GBK").substr(0, 13)), "月亮代表我的");
}

}  // namespace
}  // namespace sorakaze::player
