// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/say/VoiceNames.h"

#include <algorithm>

namespace sorakaze::speech {
namespace {

struct Person {
    std::string_view name;  ///< folded
    std::string_view voice;
    std::string_view variant;
    int pitch;
    int range;
    int rate;
};

// No two people of one language share variant, pitch and rate: so each sounds different.
constexpr Person kPeople[] = {
    // American English
    {"alex", "gmw/en-US", "", 46, 58, 170},
    {"samantha", "gmw/en-US", "f3", 44, 58, 170},
    {"victoria", "gmw/en-US", "f1", 42, 55, 164},
    {"allison", "gmw/en-US", "f2", 48, 60, 168},
    {"ava", "gmw/en-US", "f4", 50, 58, 172},
    {"susan", "gmw/en-US", "f1", 52, 50, 172},
    {"vicki", "gmw/en-US", "f2", 40, 55, 162},
    {"kathy", "gmw/en-US", "f4", 40, 52, 164},
    {"agnes", "gmw/en-US", "f3", 34, 45, 160},
    {"emma", "gmw/en-US", "f3", 54, 60, 172},
    {"emily", "gmw/en-US", "f4", 58, 60, 174},
    {"jenny", "gmw/en-US", "f2", 56, 58, 174},
    {"jessica", "gmw/en-US", "belinda", 44, 55, 172},
    {"jane", "gmw/en-US", "linda", 40, 52, 166},
    {"julia", "gmw/en-US", "f5", 44, 55, 168},
    {"mary", "gmw/en-US", "f1", 36, 50, 162},
    {"nancy", "gmw/en-US", "linda", 46, 55, 172},
    {"linda", "gmw/en-US", "linda", 34, 50, 162},
    {"lisa", "gmw/en-US", "belinda", 36, 50, 166},
    {"nicky", "gmw/en-US", "f5", 52, 58, 174},
    {"princess", "gmw/en-US", "f5", 72, 70, 170},
    {"zoe", "gmw/en-US", "f4", 46, 62, 176},
    {"tom", "gmw/en-US", "m3", 44, 55, 168},
    {"bruce", "gmw/en-US", "m1", 40, 50, 166},
    {"junior", "gmw/en-US", "m3", 88, 70, 174},
    {"ralph", "gmw/en-US", "m7", 20, 40, 158},
    {"fred", "gmw/en-US", "", 40, 12, 162},
    {"albert", "gmw/en-US", "croak", 50, 50, 160},
    {"evan", "gmw/en-US", "Alex", 38, 52, 170},
    {"nathan", "gmw/en-US", "m3", 34, 50, 164},
    {"aaron", "gmw/en-US", "Mike", 52, 55, 170},
    {"adam", "gmw/en-US", "m1", 56, 55, 172},
    {"brian", "gmw/en-US", "", 34, 50, 162},
    {"bob", "gmw/en-US", "m4", 38, 50, 164},
    {"charles", "gmw/en-US", "m2", 40, 48, 162},
    {"chris", "gmw/en-US", "m2", 54, 55, 172},
    {"david", "gmw/en-US", "m4", 50, 52, 168},
    {"eric", "gmw/en-US", "Alex", 54, 58, 172},
    {"frank", "gmw/en-US", "m1", 30, 45, 160},
    {"jack", "gmw/en-US", "m3", 56, 60, 174},
    {"james", "gmw/en-US", "Mike", 40, 50, 164},
    {"jim", "gmw/en-US", "m6", 44, 52, 168},
    {"joe", "gmw/en-US", "m6", 54, 55, 174},
    {"john", "gmw/en-US", "m5", 44, 52, 166},
    {"mark", "gmw/en-US", "m5", 54, 55, 172},
    {"michael", "gmw/en-US", "m7", 44, 50, 166},
    {"mike", "gmw/en-US", "Mike", 46, 52, 174},
    {"paul", "gmw/en-US", "max", 40, 50, 164},
    {"peter", "gmw/en-US", "max", 52, 55, 172},
    {"robert", "gmw/en-US", "m7", 34, 45, 160},
    {"sam", "gmw/en-US", "", 58, 60, 176},
    {"steve", "gmw/en-US", "m8", 50, 52, 168},
    {"whisper", "gmw/en-US", "whisper", 50, 50, 158},
    {"zarvox", "gmw/en-US", "klatt4", 40, 4, 160},
    // English of the British Isles
    {"daniel", "gmw/en-GB-x-rp", "", 42, 55, 168},
    {"oliver", "gmw/en-GB-x-rp", "m3", 50, 58, 172},
    {"george", "gmw/en-GB-x-rp", "m1", 36, 50, 162},
    {"arthur", "gmw/en-GB-x-rp", "m7", 40, 50, 164},
    {"harry", "gmw/en-GB-x-rp", "Alex", 52, 58, 172},
    {"simon", "gmw/en", "m4", 44, 55, 168},
    {"malcolm", "gmw/en", "m1", 44, 50, 164},
    {"kate", "gmw/en-GB-x-rp", "f3", 46, 58, 170},
    {"serena", "gmw/en-GB-x-rp", "f2", 46, 55, 166},
    {"stephanie", "gmw/en-GB-x-rp", "f4", 44, 56, 168},
    {"martha", "gmw/en-GB-x-rp", "f1", 42, 52, 164},
    {"lucy", "gmw/en-GB-x-rp", "f4", 56, 60, 174},
    {"sophie", "gmw/en-GB-x-rp", "f2", 56, 60, 172},
    {"charlotte", "gmw/en-GB-x-rp", "f5", 46, 55, 168},
    {"fiona", "gmw/en-GB-scotland", "f3", 46, 58, 168},
    {"jamie", "gmw/en-GB-scotland", "m3", 50, 58, 170},
    {"moira", "gmw/en-GB-x-gbclan", "f2", 44, 62, 164},
    {"sean", "gmw/en-GB-x-gbclan", "m3", 46, 60, 168},
    // English elsewhere
    {"karen", "gmw/en", "f4", 46, 62, 170},
    {"catherine", "gmw/en", "f1", 48, 55, 168},
    {"matilda", "gmw/en", "f2", 52, 60, 172},
    {"lee", "gmw/en", "m3", 46, 58, 170},
    {"gordon", "gmw/en", "m7", 42, 50, 166},
    {"tessa", "gmw/en", "f3", 42, 56, 164},
    {"rishi", "gmw/en", "Alex", 54, 60, 172},
    {"veena", "gmw/en", "f5", 52, 58, 172},
    // German
    {"anna", "gmw/de", "f3", 46, 55, 166},
    {"petra", "gmw/de", "f1", 46, 52, 166},
    {"helena", "gmw/de", "f4", 48, 55, 168},
    {"katja", "gmw/de", "f2", 48, 55, 170},
    {"markus", "gmw/de", "", 44, 52, 166},
    {"yannick", "gmw/de", "m3", 50, 55, 170},
    {"martin", "gmw/de", "m7", 42, 50, 166},
    {"stefan", "gmw/de", "m1", 46, 50, 166},
    {"viktor", "gmw/de", "Alex", 40, 50, 164},
    // French
    {"thomas", "roa/fr", "", 44, 52, 168},
    {"amelie", "roa/fr", "f4", 48, 58, 168},
    {"audrey", "roa/fr", "f3", 46, 56, 170},
    {"aurelie", "roa/fr", "f2", 48, 56, 168},
    {"marie", "roa/fr", "f1", 46, 55, 166},
    {"virginie", "roa/fr", "f5", 48, 55, 168},
    {"chantal", "roa/fr-CH", "f3", 50, 58, 166},
    {"nicolas", "roa/fr", "m3", 46, 55, 170},
    {"sebastien", "roa/fr", "m1", 44, 52, 166},
    {"aude", "roa/fr-BE", "f2", 50, 55, 168},
    // Italian
    {"alice", "roa/it", "f3", 46, 58, 170},
    {"luca", "roa/it", "", 46, 58, 170},
    {"federica", "roa/it", "f2", 48, 58, 170},
    {"paola", "roa/it", "f1", 46, 55, 168},
    {"silvia", "roa/it", "f4", 48, 58, 170},
    {"emanuele", "roa/it", "m3", 48, 55, 170},
    {"matteo", "roa/it", "m1", 44, 55, 168},
    // Spanish
    {"monica", "roa/es", "f3", 46, 58, 172},
    {"jorge", "roa/es", "", 44, 56, 172},
    {"diego", "roa/es-419", "m3", 44, 56, 172},
    {"marisol", "roa/es", "f2", 48, 58, 172},
    {"isabela", "roa/es-419", "f2", 50, 58, 172},
    {"paulina", "roa/es-419", "f3", 48, 60, 172},
    {"angelica", "roa/es-419", "f4", 48, 58, 172},
    {"soledad", "roa/es-419", "f1", 46, 55, 170},
    {"francisca", "roa/es-419", "f5", 48, 56, 172},
    {"juan", "roa/es-419", "", 46, 56, 172},
    {"carlos", "roa/es-419", "m1", 44, 54, 170},
    {"pablo", "roa/es", "m3", 48, 56, 172},
    // Portuguese, Galician and Catalan
    {"joana", "roa/pt", "f3", 46, 56, 168},
    {"catarina", "roa/pt", "f2", 48, 56, 168},
    {"joaquim", "roa/pt", "", 44, 52, 168},
    {"luciana", "roa/pt-BR", "f3", 48, 60, 170},
    {"raquel", "roa/pt-BR", "f4", 48, 58, 170},
    {"fernanda", "roa/pt-BR", "f2", 48, 58, 170},
    {"felipe", "roa/pt-BR", "", 46, 56, 170},
    {"montse", "roa/ca", "f3", 46, 55, 168},
    {"jordi", "roa/ca", "", 44, 55, 168},
    // Dutch and Flemish
    {"xander", "gmw/nl", "", 46, 54, 168},
    {"claire", "gmw/nl", "f3", 46, 56, 168},
    {"ellen", "gmw/nl", "f2", 46, 55, 166},
    {"femke", "gmw/nl", "f4", 48, 55, 168},
    // The north
    {"alva", "gmq/sv", "f3", 46, 58, 168},
    {"klara", "gmq/sv", "f2", 48, 58, 168},
    {"oskar", "gmq/sv", "", 44, 56, 168},
    {"nora", "gmq/nb", "f3", 48, 58, 168},
    {"stine", "gmq/nb", "f2", 48, 58, 168},
    {"henrik", "gmq/nb", "", 44, 56, 168},
    {"sara", "gmq/da", "f3", 46, 56, 168},
    {"ida", "gmq/da", "f2", 48, 56, 168},
    {"magnus", "gmq/da", "", 44, 54, 168},
    {"satu", "urj/fi", "f3", 46, 54, 166},
    {"onni", "urj/fi", "", 44, 52, 166},
    {"gudrun", "gmq/is", "f3", 46, 55, 166},
    // The east of Europe
    {"zosia", "zlw/pl", "f3", 48, 56, 168},
    {"ewa", "zlw/pl", "f2", 46, 55, 166},
    {"krzysztof", "zlw/pl", "", 44, 54, 166},
    {"agata", "zlw/pl", "f4", 48, 56, 168},
    {"zuzana", "zlw/cs", "f3", 46, 55, 166},
    {"iveta", "zlw/cs", "f2", 48, 55, 166},
    {"laura", "zlw/sk", "f3", 46, 55, 166},
    {"mariska", "urj/hu", "f3", 46, 55, 166},
    {"tunde", "urj/hu", "f2", 48, 55, 166},
    {"ioana", "roa/ro", "f3", 46, 56, 168},
    {"simona", "roa/ro", "f2", 48, 56, 168},
    {"milena", "zle/ru", "f3", 46, 56, 166},
    {"katya", "zle/ru", "f2", 48, 56, 168},
    {"tatyana", "zle/ru", "f1", 46, 54, 164},
    {"yuri", "zle/ru", "", 44, 54, 166},
    {"maxim", "zle/ru", "m3", 48, 55, 168},
    {"lesya", "zle/uk", "f3", 46, 56, 166},
    {"daria", "zls/bg", "f3", 46, 55, 166},
    {"lana", "zls/hr", "f3", 46, 55, 166},
    {"tina", "zls/sl", "f3", 46, 55, 166},
    {"melina", "grk/el", "f3", 46, 56, 168},
    {"nikos", "grk/el", "", 44, 54, 168},
    // Turkey, the near east, south and south-east Asia
    {"yelda", "trk/tr", "f3", 46, 55, 168},
    {"cem", "trk/tr", "", 44, 54, 168},
    {"carmit", "sem/he", "f3", 46, 54, 164},
    {"maged", "sem/ar", "", 44, 54, 162},
    {"tarik", "sem/ar", "m3", 46, 54, 164},
    {"laila", "sem/ar", "f3", 46, 55, 162},
    {"dariush", "ira/fa", "", 44, 54, 164},
    {"lekha", "inc/hi", "f3", 46, 56, 164},
    {"neel", "inc/hi", "", 46, 55, 166},
    {"kiyara", "inc/hi", "f2", 48, 56, 166},
    {"piya", "inc/bn", "f3", 46, 56, 164},
    {"vani", "dra/ta", "f3", 46, 56, 164},
    {"geeta", "dra/te", "f3", 46, 56, 164},
    {"soumya", "dra/kn", "f3", 46, 56, 164},
    {"damayanti", "poz/id", "f3", 46, 55, 168},
    {"amira", "poz/ms", "f3", 46, 55, 168},
    {"kanya", "tai/th", "f3", 46, 55, 162},
    {"narisa", "tai/th", "f2", 48, 55, 162},
    {"linh", "aav/vi", "f3", 46, 55, 164},
    // East Asia
    {"kyoko", "jpx/ja", "f3", 44, 55, 162},
    {"otoya", "jpx/ja", "", 44, 55, 162},
    {"hattori", "jpx/ja", "m3", 42, 52, 162},
    {"haruka", "jpx/ja", "f2", 48, 56, 164},
    {"sakura", "jpx/ja", "f4", 50, 58, 164},
    {"ayumi", "jpx/ja", "f1", 46, 54, 162},
    {"ichiro", "jpx/ja", "m1", 44, 52, 160},
    {"yuna", "ko", "f3", 46, 55, 164},
    {"sora", "ko", "f2", 48, 56, 164},
    {"minsu", "ko", "", 44, 54, 164},
    {"ting-ting", "sit/cmn", "f3", 46, 55, 164},
    {"tingting", "sit/cmn", "f3", 46, 55, 164},
    {"li-mu", "sit/cmn", "", 44, 54, 164},
    {"yu-shu", "sit/cmn", "f2", 48, 55, 164},
    {"mei-jia", "sit/cmn", "f4", 48, 56, 160},
    {"meijia", "sit/cmn", "f4", 48, 56, 160},
    {"sin-ji", "sit/yue", "f3", 46, 55, 162},
    {"sinji", "sit/yue", "f3", 46, 55, 162},
    // Other names under which the engine's own languages are known
    {"english", "gmw/en", "f5", 50, 50, kUsualRate},
    {"english-us", "gmw/en-US", "f5", 50, 50, kUsualRate},
    {"english-uk", "gmw/en", "f5", 50, 50, kUsualRate},
    {"british", "gmw/en", "f5", 50, 50, kUsualRate},
    {"french", "roa/fr", "", 50, 50, kUsualRate},
    {"spanish", "roa/es", "", 50, 50, kUsualRate},
    {"portuguese", "roa/pt", "", 50, 50, kUsualRate},
    {"brazil", "roa/pt-BR", "", 50, 50, kUsualRate},
    {"norwegian", "gmq/nb", "", 50, 50, kUsualRate},
    {"mandarin", "sit/cmn", "", 50, 50, kUsualRate},
    {"chinese", "sit/cmn", "", 50, 50, kUsualRate},
    {"cantonese", "sit/yue", "", 50, 50, kUsualRate},
    {"zh", "sit/cmn", "", 50, 50, kUsualRate},
    {"no", "gmq/nb", "", 50, 50, kUsualRate},
};

/// The base letters of U+00C0 to U+00FF, one byte each; a blank where there is none.
constexpr std::string_view kBaseLetters = "aaaaaaaceeeeiiiidnooooo ouuuuyt aaaaaaaceeeeiiiidnooooo ouuuuyty";

}  // namespace

std::string FoldName(std::string_view name) {
    std::string folded;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const auto byte = static_cast<unsigned char>(name[i]);
        if (byte >= 'A' && byte <= 'Z') {
            folded.push_back(static_cast<char>(byte - 'A' + 'a'));
            continue;
        }
        const auto next = i + 1 < name.size() ? static_cast<unsigned char>(name[i + 1]) : 0;
        if (byte == 0xC3 && next >= 0x80 && next <= 0xBF && kBaseLetters[next - 0x80U] != ' ') {
            folded.push_back(kBaseLetters[next - 0x80U]);
            ++i;
            continue;
        }
        folded.push_back(name[i]);
    }
    return folded;
}

std::string LanguageOfVoice(std::string_view voice) {
    return FoldName(voice.substr(voice.rfind('/') + 1));
}

std::optional<VoiceLook> FindFirstName(std::string_view folded) {
    const auto* person = std::find_if(std::begin(kPeople), std::end(kPeople),
                                      [&](const Person& candidate) { return candidate.name == folded; });
    if (person == std::end(kPeople)) return {};
    return VoiceLook{std::string(person->voice), std::string(person->variant), person->pitch, person->range,
                     person->rate};
}

std::vector<std::string_view> FirstNames() {
    std::vector<std::string_view> names;
    for (const Person& person : kPeople) names.push_back(person.name);
    return names;
}

}  // namespace sorakaze::speech
