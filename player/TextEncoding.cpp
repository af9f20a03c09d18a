// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/TextEncoding.h"

#include <algorithm>
#include <string>
#include <unordered_set>

#include "base/Utf8.h"
#include "base/unicode/Characters.h"

namespace sorakaze::player {

namespace {

using unicode::Encoding;

/// The characters that most names and titles are made of.
constexpr std::string_view kKorean =
    "이다는을가의에고하은를도지한기사나어자그로아리시대수서일해정인스만안부장오보제라전여들상과있것으마비구선"
    "주동우성거면"
    "없게무원간실신관생음조문유중모소내말랑너날눈물별달밤꽃바람노래길꿈속당행복추억미요니네처럼때왜디친첫늘봄"
    "름울겨춤빅뱅"
    "녀더걸방슈퍼박최강윤임권황송홍양백허남심태현민준영진혜경숙희철호석훈재환광규연빈린트크드브러레루르메베세"
    "테페헤타파카차"
    "쳐초코쿠키토투티프피플클블글슬놀돌솔몰볼졸골국산살번같와집처럼던할못잊떠난돌려줘줄께데며저두든잘좋같싶싸"
    "워움둘혼새벽"
    "손발몸품잠깐편청혁쁜예쁘월화목금토년명곡집창밖층극단독립계절말씀십백천왕별빛끝";
constexpr std::string_view kChinese =
    "的一是不了在人有我他这个们中来上大为和国地到以说时要就出会可也你对生能而子那得于着下自之年过发后作里用道"
    "行所然家种"
    "事成方多经么去法学如都同现当没动面起看定天分还进好小部其些主样理心她本前开但因只从想实日军者意无力它与长"
    "把机十民第"
    "公此已工使情明性知全三又关点正业外将两高间由问很最重并物手应战向头文体政美相见被利什二等产或新己制身果加"
    "西斯月话合"
    "回特代内信表化老给世位次度门任常先海通教儿原东声提立及比员解水名真论处走义各入几口认条平系气题活尔更别打"
    "女变四神总"
    "何电数安少报才结反受目太量再感建务做接必场件计管期市直德资命山金指克许统区保至队形社便空决治展马科司五基"
    "眼书非则听"
    "白却界达光放强即像难且权思王象完设式色路记南品住告类求据程北边死张该交万取拉望觉领共确传师观清今切院让候"
    "带导争运笑"
    "爱歌风雨雪花梦夜泪伤离忘永远星春秋冬夏青红蓝黑孤独单寂寞念恋吻友谁曾飞鸟云河江湖城楼曲音乐唱舞梁周杰伦邓"
    "丽君刘华菲"
    "陈奕迅林俊李宗盛罗佑崔健蔡依孙燕姿莫蔚巍朴树黄驹亮朋甜蜜吉祥故乡童精选集专辑演遇爷叶惠妹姐哥弟爸妈娘灯火"
    "車车站船港"
    "岛桥街晚早晨阳影照镜窗酒茶香味糖果千百六七八九零半双快慢轻冷暖热疯狂静默沉醉睡醒哭泣痛苦幸福祝愿望简恒许"
    "巧";
constexpr std::string_view kJapanese =
    "あぃいぅうぇえぉおかがきぎくぐけげこごさざしじすずせぜそぞただちぢっつづてでとどなにぬねのはばぱひびぴふ"
    "ぶぷへべぺほぼぽ"
    "まみむめもゃやゅゆょよらりるれろゎわゐゑをんァアィイゥウェエォオカガキギクグケゲコゴサザシジスズセゼソゾ"
    "タダチヂッツヅテ"
    "デトドナニヌネノハバパヒビピフブプヘベペホボポマミムメモャヤュユョヨラリルレロヮワヰヱヲンヴー"
    "日一人年大十二本中長出三時行見月分後前生五間上東四今金九入学高円子外八六下来気小七山話女北午百書先名川千"
    "水半男西電"
    "校語土木聞食車何南万毎白天母火右読友左休父雨愛恋心夢夜空花風海星歌曲音楽涙春夏秋冬雪桜光影明朝夕暗赤青黒"
    "君僕私京都"
    "道駅旅鳥世界永遠約束思想伝説物未少宇多田浜崎椎林檎島美井陽和正達郎竹内松任谷由実坂龍久石譲村新司吉幸恵奈"
    "倉麻衣平森"
    "藤佐鈴橋伊渡辺加斉斎清岡野原福集全最初盤版情熱大陸手紙命鬼滅刃残酷使徒交響詩舞姫荒城港町酒場津軽峡景色街"
    "角時代地図";

using Characters = std::unordered_set<char32_t>;

Characters SetOf(std::string_view text) {
    Characters set;
    for (std::size_t at = 0; at < text.size();) {
        const auto [code, size] = utf8::Read(text, at);
        set.insert(code);
        at += size;
    }
    return set;
}

bool IsIn(char32_t code, char32_t first, char32_t last) {
    return code >= first && code <= last;
}

// The weights below are per character. They say how much more often one finds it in text of its language than
// by chance in the bytes of another's; only their order of magnitude counts.

constexpr double kNever = -1e9;

/// A script of two bytes a character.
struct TwoByte {
    Encoding encoding;
    const Characters& common;
    char32_t firstOfScript, lastOfScript;
    double other;  ///< weight of a character of the script that isn't common
};

/// The weight of a text in such an encoding; very low where the bytes aren't of it.
double WeightOf(std::string_view bytes, const TwoByte& script) {
    constexpr double kCommon = 2, kForeign = -1.5, kMark = 0.3, kExtension = -1;
    double weight = 0;
    bool isLatinBefore = false;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto lead = static_cast<unsigned char>(bytes[i]);
        if (lead < 0x80) {
            isLatinBefore = unicode::IsAlphanumeric(lead);
            continue;
        }
        if (i + 1 == bytes.size()) return weight - 1;  // cut off
        const auto trail = static_cast<unsigned char>(bytes[i + 1]);
        const std::string character = unicode::ToUtf8(bytes.substr(i++, 2), script.encoding);
        const auto [code, size] = utf8::Read(character, 0);
        if (code == 0xFFFD || size != character.size()) return kNever;
        // Beside Latin letters accents are likelier.
        if (isLatinBefore) weight -= 1;
        isLatinBefore = false;
        if (script.common.contains(code))
            weight += kCommon;
        else if (lead < 0xA1 || trail < 0xA1)
            weight += kExtension;
        else if (IsIn(code, script.firstOfScript, script.lastOfScript))
            weight += lead < 0xD8 ? script.other : -0.5;
        else
            weight +=
                IsIn(code, 0x3001, 0x3011) || IsIn(code, 0xFF01, 0xFF5E) || code == 0xB7 ? kMark : kForeign;
    }
    return weight;
}

bool IsCyrillic(char32_t code) {
    static const Characters kFurther = SetOf("ЁёІіЇїЄєҐґЎў");
    return IsIn(code, 0x410, 0x44F) || kFurther.contains(code);
}

/// The words of a text, and what is between them.
template <typename Visit>
void ForEachWord(const std::u32string& text, const Visit& visit) {
    for (std::size_t begin = 0; begin < text.size();) {
        std::size_t end = begin;
        const bool isWord = unicode::IsAlphanumeric(text[begin]);
        while (end < text.size() && unicode::IsAlphanumeric(text[end]) == isWord) ++end;
        visit(std::u32string_view(text).substr(begin, end - begin), isWord);
        begin = end;
    }
}

std::u32string CodesOf(std::string_view utf8) {
    std::u32string codes;
    for (std::size_t at = 0; at < utf8.size();) {
        const auto [code, size] = utf8::Read(utf8, at);
        codes += code;
        at += size;
    }
    return codes;
}

bool IsLower(char32_t code) {
    return unicode::Lower(code) == code;
}

/// "word", "Word" or "WORD".
bool HasUsualCase(std::u32string_view word) {
    const auto upper = [](char32_t code) { return !IsLower(code); };
    return std::all_of(word.begin() + 1, word.end(), IsLower) || std::all_of(word.begin(), word.end(), upper);
}

double WeightOfCyrillicWord(std::u32string_view word) {
    static const Characters kVowels = SetOf("аеёиоуъыэюяіїєАЕЁИОУЪЫЭЮЯІЇЄ"), kRare = SetOf("щэфцюЩЭФЦЮ");
    static const Characters kUsual = SetOf("оеаинтсрвлк");
    const auto count = [&](auto test) {
        return static_cast<double>(std::count_if(word.begin(), word.end(), test));
    };
    const double letters = count(IsCyrillic);
    const double all = static_cast<double>(word.size());
    if (letters < all || !HasUsualCase(word)) return -all;
    const double vowels = count([](char32_t code) { return kVowels.contains(code); });
    const bool isSpeakable = word.size() < 3 || (vowels / all >= 0.15 && vowels / all <= 0.75);
    const double rare = count([](char32_t code) { return kRare.contains(code); });
    const double usual = count([](char32_t code) { return kUsual.contains(unicode::Lower(code)); });
    const bool isAbbreviation =
        word.size() <= 4 && !IsLower(word.back()) && rare == 0 && word.find(U'Ь') == word.npos;
    if (!isSpeakable && isAbbreviation) return 0.5 * all;
    return isSpeakable ? letters + 0.3 * usual - 0.5 * rare : -0.5 * all;
}

double WeightOfCyrillic(std::string_view bytes) {
    static const Characters kMarks = SetOf("«»—–…№“”„’‘");
    double weight = 0;
    std::size_t longest = 0, letters = 0;
    ForEachWord(CodesOf(unicode::ToUtf8(bytes, Encoding::Windows1251)),
                [&](std::u32string_view word, bool isWord) {
                    const bool isForeign =
                        std::any_of(word.begin(), word.end(), [](char32_t code) { return code >= 0x80; });
                    if (!isForeign) return;
                    if (!isWord) {
                        for (const char32_t code : word)
                            weight += code < 0x80 || kMarks.contains(code) ? 0 : -3;
                        return;
                    }
                    weight += WeightOfCyrillicWord(word);
                    letters += word.size();
                    longest = std::max(longest, word.size());
                });
    // Two accents in a row occur in Latin text, too.
    return longest >= 3 || (longest == 2 && letters >= 4) ? weight : kNever;
}

double WeightOfLatin(std::string_view bytes) {
    constexpr double kBesideLetter = 1.2, kAlone = 0.8, kPair = -0.3, kMark = 0.8, kSymbol = -1;
    static const Characters kMarks = SetOf("’‘“”–—…«»°½¼¾²³®™©¿¡·´");
    const std::u32string text = CodesOf(unicode::ToUtf8(bytes, Encoding::Windows1252));
    const auto isLetter = [&](std::size_t i) {
        return i < text.size() && unicode::IsAlphanumeric(text[i]) && text[i] != 0xB5;
    };
    double weight = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] < 0x80) continue;
        const std::size_t before = i - 1, after = i + 1;  // before the first: beyond the last
        if (!isLetter(i)) {
            weight += kMarks.contains(text[i]) ? kMark : kSymbol;
        } else if ((isLetter(before) && text[before] < 0x80) || (isLetter(after) && text[after] < 0x80)) {
            weight += kBesideLetter;
        } else {
            weight += isLetter(before) || isLetter(after) ? kPair : kAlone;
        }
    }
    return weight;
}

}  // namespace

unicode::Encoding LikelyEncoding(std::string_view bytes) {
    static const Characters korean = SetOf(kKorean), chinese = SetOf(kChinese), japanese = SetOf(kJapanese);
    static const TwoByte kScripts[] = {{Encoding::EucKr, korean, 0xAC00, 0xD7A3, 0.9},
                                       {Encoding::Gbk, chinese, 0x4E00, 0x9FFF, 0.6},
                                       {Encoding::EucJp, japanese, 0x3041, 0x9FFF, 0.4}};
    // One character that isn't a common one says little.
    constexpr double kMargin = 0.5, kLeastOfTwoByte = 1.5;
    constexpr std::size_t kEnough = 400;
    bytes = bytes.substr(0, kEnough);
    Encoding best = Encoding::Windows1252;
    double weight = WeightOfLatin(bytes) + kMargin;
    const auto consider = [&](Encoding encoding, double its) {
        if (its <= weight) return;
        best = encoding;
        weight = its;
    };
    consider(Encoding::Windows1251, WeightOfCyrillic(bytes));
    for (const TwoByte& script : kScripts) {
        const double its = WeightOf(bytes, script);
        if (its >= kLeastOfTwoByte) consider(script.encoding, its);
    }
    return best;
}

}  // namespace sorakaze::player
