// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "show/mainWindow.h"

#include <algorithm>
#include <cassert>

#include "app/runtime/Runtime.h"
#include "sound/MixingEngine.h"
#include "speech/KanaTable.h"

namespace sorakaze {

mainWindow::mainWindow() {
    __Init();
    Layout();
    CreateControls();
    Runtime::Current().onMessage = [this](Message& message) { tellMessage(message); };
}

mainWindow::~mainWindow() {
    Runtime::Current().onMessage = nullptr;
    mainTimer.SetMode(Timer::kOff);
    commandExecThread.Kill();
    getNextSong.Kill();
    __Exit();
}

void mainWindow::__Init() {
    opening = std::make_shared<Block>();
    intro = std::make_shared<Block>();
    ending = std::make_shared<Block>();
    jingle = std::make_shared<Block>();
    command = std::make_shared<Block>();
    wikiHistory.clear();
    kanaArray.assign(167, String());
    romeArray.assign(167, String());
    IntroW = std::make_shared<Block>();
}

/// Drops all texts and references. Stops no thread and no sound.
void mainWindow::__Exit() {
    for (String* text : {&program, &station, &band, &wikiContents, &song, &artist, &album, &personality,
                         &mode, &j_personality}) {
        *text = String();
    }
    for (BlockRef* block : {&opening, &intro, &ending, &jingle, &command, &IntroW}) block->reset();
    for (std::vector<String>* list : {&wikiHistory, &kanaArray, &romeArray}) list->clear();
    for (FolderItemRef* item : {&appFolder, &kanji2kanaCmd, &resourceFolder}) item->reset();
    for (SoundRef* sound : {&soundData, &sayData}) sound->reset();
    iTunesApp.reset();
}

void mainWindow::songDurationSlider_ValueChanged() {
    songDuration.SetText(Str(songDurationSlider.Value()));
}

void mainWindow::logger(const String& message) {
    resultField.SetText(resultField.Text() + message + Chr(13));
}

void mainWindow::Event_Open() {
    assert(Runtime::Current().Threads().OnMainThread());
    appFolder = NotNil(GetFolderItem("", kAbsolutePath));
    const auto bundle = NotNil(NotNil(appFolder)->Child("Sorakaze.app"));
    resourceFolder = NotNil(NotNil(bundle->Child("Contents"))->Child("Resources"));
    kanji2kanaCmd = NotNil(resourceFolder->Child("SayKotoeri"));
    for (std::int32_t i = 1; i <= NotNil(appFolder->Child("Programs"))->Count(); ++i) {
        const String name = NotNil(NotNil(appFolder->Child("Programs"))->Item(i))->Name();
        // Kept behaviour 13.
        if (!(Left(name, 1) == ".")) programMenu.AddRow(NthField(name, ".txt", 1));
        Yield();
    }
    programMenu.SetListIndex(0);
    playlistMenu.AddRows(Split(iTunesPlaylist(), ", "));  // kept behaviour 14
    playlistMenu.SetListIndex(0);
    for (std::size_t row = 0; row < kKanaTable.size(); ++row) {
        kanaArray[row] = kKanaTable[row].kana;
        romeArray[row] = kKanaTable[row].romaji;
    }
}

void mainWindow::tellFailures() {
    sound::MixingEngine* const engine = Runtime::Current().Engine();
    if (!engine) return;
    for (const sound::DecoderFailure& failure : engine->TakeFailures())
        tell(ShowEvent::Kind::Failed,
             {{"what", "sound"}, {"path", failure.file.string()}, {"why", failure.why}});
}

void mainWindow::tellDucks() {
    sound::MixingEngine* const engine = Runtime::Current().Engine();
    if (!engine) return;
    for (const double depth : engine->TakeDucks()) tell(ShowEvent::Kind::Duck, {{"depth", depth}});
}

bool mainWindow::wasTold(const ShowEvent::Fields& fields) {
    constexpr std::size_t kMostKept = 1000;
    if (std::find(toldOnce.begin(), toldOnce.end(), fields) != toldOnce.end()) return true;
    if (toldOnce.size() < kMostKept) toldOnce.push_back(fields);
    return false;
}

void mainWindow::tell(ShowEvent::Kind kind, ShowEvent::Fields fields) {
    AssertBaton();
    // The same for every line.
    const bool isOfNames = kind == ShowEvent::Kind::Failed && !fields.empty() &&
                           fields.front() == ShowEvent::Fields::value_type{"what", "names"};
    const bool isToldOnce = kind == ShowEvent::Kind::Credit || kind == ShowEvent::Kind::Voice || isOfNames;
    if (isToldOnce && wasTold(fields)) return;
    if ((kind == ShowEvent::Kind::Failed && !isOfNames) || kind == ShowEvent::Kind::Voice)
        completeFailure(fields);
    if (observer) observer->OnShowEvent({Ticks() - startTicks, kind, std::move(fields)});
}

}  // namespace sorakaze
