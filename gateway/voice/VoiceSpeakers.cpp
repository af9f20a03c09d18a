// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "gateway/voice/VoiceSpeakers.h"

#include <algorithm>
#include <string_view>

namespace sorakaze::gateway {
namespace {

/// The numbers are those of the speakers in voice services' forms; the women are first.
struct Speaker {
    std::string_view voice;
    std::string_view names;  ///< in lower case, each between blanks
};

constexpr Speaker kSpeakers[] = {
    {"Kyoko", " kyoko きょうこ キョウコ 京子 恭子 響子 0 1 female woman 女性 女 f "},
    {"Haruka", " haruka はるか ハルカ 遥 春香 遙 2 f2 "},
    {"Sakura", " sakura さくら サクラ 桜 咲良 3 f3 "},
    {"Ayumi", " ayumi あゆみ アユミ 歩美 亜由美 4 f4 "},
    {"Otoya", " otoya おとや オトヤ 音也 乙也 5 male man 男性 男 m "},
    {"Hattori", " hattori はっとり ハットリ 服部 6 m2 "},
    {"Ichiro", " ichiro いちろう イチロウ イチロー 一郎 7 m3 "},
};

/// Null for an unknown one.
const Speaker* FindSpeaker(std::string_view name) {
    name.remove_prefix(std::min(name.find_first_not_of(' '), name.size()));
    name = name.substr(0, name.find(' '));
    std::string wanted = " ";
    for (const char letter : name) {
        wanted += letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    }
    wanted += ' ';
    for (const Speaker& speaker : kSpeakers) {
        if (wanted.size() > 2 && speaker.names.find(wanted) != std::string_view::npos) return &speaker;
    }
    return nullptr;
}

}  // namespace

bool IsSpeaker(std::string_view name) {
    return FindSpeaker(name) != nullptr;
}

std::string SpeakerVoice(std::string_view name) {
    const Speaker* const speaker = FindSpeaker(name);
    return std::string((speaker ? *speaker : kSpeakers[0]).voice);
}

}  // namespace sorakaze::gateway
