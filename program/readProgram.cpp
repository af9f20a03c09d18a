// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The loader of program files. Kept behaviour 10.
#include "app/runtime/Runtime.h"
#include "app/runtime/TextStreams.h"
#include "program/ProgramLine.h"
#include "show/ProgramPlace.h"
#include "show/mainWindow.h"

namespace sorakaze {
namespace {

void Set(String& property, const std::optional<String>& value) {
    if (value) property = *value;
}

/// Stores a command in its variant's first free row. Kept behaviours 7, 8 and 12.
void Store(Block& block, std::int32_t& counter, const ProgramLine::Command& command) {
    for (std::int32_t i = 0; i <= Block::kLastLine; ++i) {
        String& cell = block(i, command.variant);
        if (cell.IsEmpty()) {
            cell = command.text;
            block.Origin(i, command.variant) = CurrentPlace();
            counter = command.variant;
            return;
        }
        Yield();
    }
}

void Store(mainWindow& window, const ProgramLine::Command& command) {
    using BlockName = ProgramLine::BlockName;
    switch (command.block) {
        case BlockName::Opening:
            return Store(*window.opening, window.openingCount, command);
        case BlockName::IntroW:
            return Store(*window.IntroW, window.introWCount, command);
        case BlockName::Intro:
            return Store(*window.intro, window.introCount, command);
        case BlockName::Jingle:
            return Store(*window.jingle, window.jingleCount, command);
        case BlockName::Ending:
            return Store(*window.ending, window.endingCount, command);
    }
}

void Apply(mainWindow& window, const ProgramLine& line) {
    Set(window.program, line.program);
    Set(window.station, line.station);
    Set(window.band, line.band);
    Set(window.personality, line.personality);
    Set(window.j_personality, line.j_personality);
    if (line.j_personality) window.isJapaneseOn = true;
    Set(window.mode, line.mode);
    for (const auto& command : line.commands) Store(window, command);
}

/// Empties variants 0 to 9. Kept behaviour 9.
void ClearBlocks(mainWindow& window) {
    for (std::int32_t row = 0; row <= Block::kLastLine; ++row) {
        for (std::int32_t variant = 0; variant <= 9; ++variant) {
            for (const auto& block :
                 {window.opening, window.IntroW, window.intro, window.jingle, window.ending}) {
                (*block)(row, variant) = String();
            }
            Yield();
        }
    }
}

}  // namespace

void mainWindow::readProgram(const String& name) {
    wikiHistory.clear();
    ClearBlocks(*this);
    isJapaneseOn = false;
    const auto file = NotNil(NotNil(NotNil(appFolder)->Child("Programs"))->Child(name + ".txt"));
    if (!file->Exists()) {
        MsgBox(String("番組ファイル：") + name + ".txt がありません");
        return;  // kept behaviour 11
    }
    const auto stream = NotNil(TextInputStream::Open(file));
    CurrentPlace() = {name, 0};
    do {
        ++CurrentPlace().line;
        Apply(*this, ParseProgramLine(stream->ReadLine()));
        Yield();
    } while (!stream->EndOfFile());
    stream->Close();
    CurrentPlace() = {};
}

}  // namespace sorakaze
