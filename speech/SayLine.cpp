// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/SayLine.h"

#include "app/runtime/Runtime.h"
#include "app/runtime/TextStreams.h"
#include "speech/VoicePage.h"

namespace sorakaze {
namespace {

/// What `say` prints of a text that would take more than two minutes.
constexpr const char* kCut = "the text is too long, its speech was cut";
/// Nothing that `say` made is longer, but a text's own commands may have made the file.
constexpr double kLongestSpeech = 125;  // seconds

void TellOfCut(mainWindow& window) {
    window.tell(ShowEvent::Kind::Failed, {{"what", "say"}, {"path", ""}, {"why", String(kCut)}});
}

void PlayToEnd(mainWindow& window, const String& voice, const String& text) {
    window.sayData->Play();
    window.tell(ShowEvent::Kind::Say,
                {{"voice", voice}, {"text", text}, {"seconds", window.sayData->Seconds()}});
    const SoundRef speech = window.sayData;
    bool cut = false;
    WaitWhile([&speech, &cut] {
        cut = speech->Played() > kLongestSpeech;
        return !cut && speech->IsPlaying();
    });
    if (!cut) return;
    speech->Stop();
    TellOfCut(window);
}

}  // namespace

void SayLine(mainWindow& window, Shell& shell, const String& voice, const String& text) {
    const auto file =
        NotNil(NotNil(SpecialFolder::Temporary())->Child(String("temp") + Str(Ticks()) + ".aiff"));
    shell.Execute(String("say -v ") + voice + " " + Chr(34) + text + Chr(34) + " -o " + file->ShellPath(),
                  file);
    if (!file->Exists()) {
        MsgBox("読み上げ結果のサウンドファイルが存在しません");
        return;
    }
    if (InStr(shell.Result(), kCut) > 0) TellOfCut(window);
    window.sayData = file->OpenAsSound();
    if (window.sayData) {
        PlayToEnd(window, voice, text);
    } else {
        MsgBox("読み上げ結果のファイルをサウンドとして読み込めませんでした");
    }
    file->Delete();
}

void SayjLine(mainWindow& window, const String& text) {
    window.tell(ShowEvent::Kind::Sayj, {{"voice", window.j_personality}, {"text", text}});
    const auto file = NotNil(NotNil(SpecialFolder::Temporary())->Child("temp.html"));
    // A folder of that name, which nobody should have made, would end the show's thread.
    if (file->Directory()) file->Delete();
    const auto page = NotNil(TextOutputStream::Create(file));
    page->Write(VoicePage(window.deployment, window.j_personality, text));
    page->Close();
    window.voiceHTMLViewer.LoadPage(NotNil(window.resourceFolder)->Child("blank.html"));
    window.voiceHTMLViewer.LoadPage(SpecialFolder::Temporary()->Child("temp.html"));
}

}  // namespace sorakaze
