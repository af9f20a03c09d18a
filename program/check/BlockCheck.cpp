// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The blocks as the show draws and runs them: their numbers, their tracks, and what is heard to its end.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "program/check/Draft.h"

namespace sorakaze::check {
namespace {

using Kind = Command::Kind;
using Variant = std::vector<const Command*>;

/// The lines of each variant of one block, and all in the order of the file.
struct BlockLines {
    BlockName name;
    Variant all;
    std::array<Variant, words::kHighestVariant + 1> variants;
    int highest = 0;

    std::string Name(int variant) const {
        return "variant " + std::to_string(variant) + " of " + std::string(NameOf(name));
    }
};

std::string Seconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", seconds);
    return text;
}

void CheckGaps(Draft& draft, const BlockLines& block) {
    for (int variant = 0; variant < block.highest; ++variant) {
        if (!block.variants[static_cast<std::size_t>(variant)].empty()) continue;
        int next = variant + 1;
        while (block.variants[static_cast<std::size_t>(next)].empty()) ++next;
        const Command& first = *block.variants[static_cast<std::size_t>(next)].front();
        draft.findings.Error(first.line, first.number, "empty-variant",
                             (variant == 0 ? "variants are numbered from 0: " : "") + block.Name(variant) +
                                 " has no lines, but can be drawn");
        variant = next;
    }
}

void CheckNumbers(Draft& draft, const BlockLines& block) {
    CheckGaps(draft, block);
    const Command& last = *block.all.back();
    if (last.variant < block.highest) {
        draft.findings.Error(last.line, last.number, "never-drawn",
                             "the block's last line has to be of its highest variant: after variant " +
                                 std::to_string(last.variant) + " here, those up to " +
                                 std::to_string(block.highest) + " are never drawn");
    }
    const Variant& ten = block.variants[words::kHighestVariant];
    if (!ten.empty()) {
        draft.findings.Warn(
            ten.front()->line, ten.front()->number, "variant-ten",
            "variant 10 keeps its lines when the program is read again: in the second show they come twice");
    }
}

void CheckTracks(Draft& draft, const BlockLines& block, int number) {
    const Variant& lines = block.variants[static_cast<std::size_t>(number)];
    const bool isIntro = block.name == BlockName::Intro || block.name == BlockName::IntroW;
    const bool mayPlay = isIntro || block.name == BlockName::Opening;
    const bool known =
        std::ranges::none_of(lines, [](const Command* line) { return line->kind == Kind::Unknown; });
    const Command* track = nullptr;
    for (const Command* line : lines) {
        if (line->kind != Kind::PlayTrack) continue;
        if (!mayPlay) {
            draft.findings.Error(
                line->line, line->text, "track-in-block",
                block.name == BlockName::Jingle
                    ? "a jingle block must not start a track: the intro block after it starts the next one "
                      "at once"
                    : "an ending block must not start a track: the show stops with the block");
        } else if (track) {
            draft.findings.Error(line->line, line->text, "second-track",
                                 block.Name(number) + " starts a track in line " +
                                     std::to_string(track->line) +
                                     " already, and this one replaces it at once");
        }
        track = line;
    }
    if (isIntro && !track && known) {
        draft.findings.Error(
            lines.front()->line, lines.front()->number, "no-track",
            block.Name(number) +
                " has no \"play [[iTunes]]\", so the show goes on talking and doesn't get to its music");
    }
}

/// A sound gets no time if nothing that takes time follows it.
void CheckSounds(Draft& draft, const Variant& lines) {
    for (auto line = lines.begin(); line != lines.end(); ++line) {
        if ((*line)->kind != Kind::PlayFile) continue;
        const auto next =
            std::find_if(line + 1, lines.end(), [](const Command* each) { return each->kind != Kind::Sayj; });
        if (next != lines.end() && (*next)->kind != Kind::PlayTrack && (*next)->kind != Kind::PlayFile)
            continue;
        const char* const why = next == lines.end() ? "the block ends here and fades the sound out"
                                : (*next)->kind == Kind::PlayTrack
                                    ? "the track that starts next fades the sound out"
                                    : "the sound that starts next ends this one";
        draft.findings.Warn(
            (*line)->line, (*line)->text, "sound-cut",
            std::string(why) + " at once; write a wait after it, as long as it is to be heard");
    }
}

/// The sentence without what only a show knows: it takes at least as long as this.
std::string LeastText(Draft& draft, const Command& line) {
    String text = Expanded(draft, draft.Text(line.line, line.argument));
    for (const auto placeholder : words::kPlaceholders)
        text = ReplaceAll(text, "[[" + std::string(placeholder) + "]]", "");
    return Trim(text).Bytes();
}

void CheckWaitFor(Draft& draft, const Command& sentence, const Command& wait, double seconds) {
    const auto& speaker = draft.Header(words::Header::JPersonality);
    const std::string text = LeastText(draft, sentence);
    if (text.empty()) return;
    const auto needed = draft.surroundings.SpeechSeconds(speaker ? speaker->text : "", text, seconds);
    if (!needed || *needed <= seconds) return;
    // What the service and the page take comes on top.
    const double better = wait.seconds + std::ceil((*needed + 0.4 - seconds) * 2) / 2;
    auto& finding = draft.findings.Warn(wait.line, wait.argument, "short-wait",
                                        "the sentence of line " + std::to_string(sentence.line) + " takes " +
                                            Seconds(*needed) + " seconds, the wait after it " +
                                            Seconds(seconds) + DidYouMean("wait " + Str(better).Bytes()));
    finding.fix = Fix{wait.argument, Str(better).Bytes(), false};
}

/// A sentence of a page isn't waited for, and the next one ends it.
void CheckPageSpeech(Draft& draft, const BlockLines& block, const Variant& lines) {
    bool music = false;
    for (auto line = lines.begin(); line != lines.end(); ++line) {
        music = music || (*line)->kind == Kind::PlayTrack;
        if ((*line)->kind != Kind::Sayj) continue;
        const Command* wait = nullptr;
        double seconds = 0;
        auto next = line + 1;
        for (; next != lines.end() && (*next)->kind != Kind::Say && (*next)->kind != Kind::Sayj; ++next) {
            if ((*next)->kind != Kind::Wait) continue;
            if (!wait) wait = *next;
            seconds += (*next)->seconds;
        }
        if (wait) {
            CheckWaitFor(draft, **line, *wait, seconds);
        } else if (next != lines.end()) {
            draft.findings.Warn(
                (*line)->line, (*line)->text, "speech-cut",
                (*next)->kind == Kind::Sayj
                    ? "the next sentence ends this one at once; write a wait between them, as long as this "
                      "one takes"
                    : "the next sentence is spoken at the same time; write a wait between them");
        } else if (!music && (block.name == BlockName::Opening || block.name == BlockName::Jingle)) {
            draft.findings.Warn(
                (*line)->line, (*line)->text, "speech-cut",
                "the block ends at once, and the next one speaks at the same time; write a wait after it");
        }
    }
}

void CheckMissing(Draft& draft, BlockName block) {
    if (draft.IsUncertain(block)) return;
    if (block == BlockName::Intro) {
        draft.findings.Error(
            1, {}, "no-intro",
            "there is no intro block, so nothing starts a track (intro: 0, play [[iTunes]])");
    } else if (block == BlockName::IntroW && draft.surroundings.LooksUpArtists()) {
        draft.findings.Error(
            1, {}, "no-intro",
            "there is no introW block, so the show stands still before a track whose artist is known "
            "(introW: 0, play [[iTunes]])");
    }
}

void CheckBlock(Draft& draft, const BlockLines& block) {
    if (block.all.empty()) return CheckMissing(draft, block.name);
    if (!draft.IsUncertain(block.name)) CheckNumbers(draft, block);
    for (int number = 0; number <= block.highest; ++number) {
        const Variant& lines = block.variants[static_cast<std::size_t>(number)];
        if (lines.empty()) continue;
        CheckTracks(draft, block, number);
        CheckSounds(draft, lines);
        CheckPageSpeech(draft, block, lines);
    }
}

}  // namespace

void CheckBlocks(Draft& draft) {
    std::array<BlockLines, words::kBlocks.size()> blocks;
    for (std::size_t i = 0; i < blocks.size(); ++i) blocks[i].name = static_cast<BlockName>(i);
    for (const Command& command : draft.commands) {
        BlockLines& block = blocks[static_cast<std::size_t>(command.block)];
        block.all.push_back(&command);
        block.variants[static_cast<std::size_t>(command.variant)].push_back(&command);
        block.highest = std::max(block.highest, command.variant);
    }
    for (const BlockLines& block : blocks) CheckBlock(draft, block);
}

}  // namespace sorakaze::check
