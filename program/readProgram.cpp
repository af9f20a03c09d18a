// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The loader of program files. A key counts wherever it stands in a line, and one line can match many keys.
#include "app/runtime/Runtime.h"
#include "app/runtime/TextStreams.h"
#include "show/mainWindow.h"

namespace sorakaze {
namespace {

/// The line without its comment, with blanks for tabs and no line end.
String Clean(const String& text) {
    String line = NthField(text, "#", 1);
    line = ReplaceAll(line, Chr(9), " ");
    line = ReplaceAll(line, Chr(10), "");
    line = ReplaceAll(line, Chr(13), "");
    return Trim(line);
}

/// True if the line holds the key; `property` is then the text behind it, up to its next occurrence.
bool ReadHeader(const String& line, const char* key, String& property) {
    if (InStr(line, key) <= 0) return false;
    property = Trim(NthField(line, key, 2));
    return true;
}

/// Stores the command line of a block line in its variant's first free row. The key is taken to begin the
/// line: as many characters as it has are cut from the front, wherever it stands, and the tests for later
/// keys see what is left.
void ReadBlockLine(String& line, const char* key, Block& block, std::int32_t& counter) {
    if (InStr(line, key) <= 0) return;
    line = Mid(line, Len(key) + 1);
    const String number = NthField(line, ",", 1);
    const std::int32_t variant = ToInt32(Val(Trim(number)));
    for (std::int32_t i = 0; i <= Block::kLastLine; ++i) {
        String& cell = block(i, variant);
        if (cell.IsEmpty()) {
            cell = Trim(Mid(line, Len(number) + 2));
            counter = variant;
            return;
        }
        Yield();
    }
}

void ReadLine(mainWindow& window, const String& text) {
    String line = Clean(text);
    if (line.IsEmpty()) return;
    ReadHeader(line, "program:", window.program);
    ReadHeader(line, "station:", window.station);
    ReadHeader(line, "band:", window.band);
    ReadHeader(line, "personality:", window.personality);
    if (ReadHeader(line, "j_personality:", window.j_personality)) window.isJapaneseOn = true;
    ReadHeader(line, "mode:", window.mode);
    ReadBlockLine(line, "opening:", *window.opening, window.openingCount);
    ReadBlockLine(line, "introW:", *window.IntroW, window.introWCount);
    ReadBlockLine(line, "intro:", *window.intro, window.introCount);
    ReadBlockLine(line, "jingle:", *window.jingle, window.jingleCount);
    ReadBlockLine(line, "ending:", *window.ending, window.endingCount);
}

/// Empties variants 0 to 9. Variant 10 stays, and grows with each load of a file that uses it.
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
        return;
    }
    const auto stream = NotNil(TextInputStream::Open(file));
    do {
        ReadLine(*this, stream->ReadLine());
        Yield();
    } while (!stream->EndOfFile());
    stream->Close();
}

}  // namespace sorakaze
