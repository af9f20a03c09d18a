// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "speech/SayLine.h"

#include "app/runtime/Runtime.h"
#include "app/runtime/TextStreams.h"
#include "show/FailedBox.h"
#include "show/LevelEvent.h"

namespace sorakaze {
namespace {

/// What `say` prints for a text that would take more than two minutes.
constexpr const char* kCut = "the text is too long, its speech was cut";
/// `say` makes nothing longer, but shell commands in the text may have made the file.
constexpr double kLongestSpeech = 125;  // seconds

void TellFailed(TellShow tell, const String& why) {
    tell(ShowEvent::Kind::Failed, {{"what", "say"}, {"path", ""}, {"why", why}});
}

/// Without the name of the program, which the event has.
String WithoutName(const String& complaint) {
    constexpr const char* kName = "say: ";
    return Left(complaint, Len(kName)) == kName ? Mid(complaint, Len(kName) + 1) : complaint;
}

/// Tells what `say` has complained of though it speaks: most of it is about the line, the rest about how
/// names are said.
void TellComplaint(TellShow tell, const String& complaint) {
    const String file = "Pronunciations.txt";
    const String begin = file + ": ";
    if (Left(complaint, Len(begin)) == begin) {
        tell(ShowEvent::Kind::Failed,
             {{"what", "names"}, {"path", file}, {"why", Mid(complaint, Len(begin) + 1)}});
    } else {
        TellFailed(tell, complaint);
    }
}

/// Whether something was said by `say`, or by the shell of its text, and not by what the text started there.
bool IsOfTheLine(const String& complaint) {
    return Left(complaint, 5) == "say: " || Left(complaint, 4) == "sh: ";
}

/// Of a line that begins with "say: " in what `say` printed: what follows `begin`; empty if there is none.
String LineAfter(const String& printed, const String& begin) {
    const auto at = InStr(String("\n") + printed, String("\nsay: ") + begin);
    if (at == 0) return {};
    const String rest = Mid(printed, at + Len(String("say: ") + begin));
    const auto end = InStr(rest, "\n");
    return end == 0 ? rest : Left(rest, end - 1);
}

/// Tells which voice has spoken if it isn't the one asked for as its folder has it, and whom it must be
/// credited to.
void TellVoice(TellShow tell, const String& asked, const String& printed) {
    if (const String line = LineAfter(printed, "voice: "); !line.IsEmpty())
        tell(ShowEvent::Kind::Voice,
             {{"asked", asked}, {"used", NthField(line, "\t", 1)}, {"why", NthField(line, "\t", 2)}});
    if (const String line = LineAfter(printed, "credit: "); !line.IsEmpty())
        tell(ShowEvent::Kind::Credit, {{"what", "voice"},
                                       {"title", NthField(line, "\t", 1)},
                                       {"address", ""},
                                       {"licence", NthField(line, "\t", 2)}});
}

void PlayToEnd(const SoundRef& speech, TellShow tell) {
    bool cut = false;
    WaitWhile([&speech, &cut] {
        cut = speech->Played() > kLongestSpeech;
        return !cut && speech->IsPlaying();
    });
    if (!cut) return;
    speech->Stop();
    TellFailed(tell, kCut);
}

}  // namespace

void SayLine(Shell& shell, const String& voice, const String& text, SoundRef& sayData, TellShow tell) {
    const auto file =
        NotNil(NotNil(SpecialFolder::Temporary())->Child(String("temp") + Str(Ticks()) + ".aiff"));
    // Kept behaviours 42 and 43.
    shell.Execute(String("say -v ") + voice + " " + Chr(34) + text + Chr(34) + " -o " + file->ShellPath(),
                  file);
    if (!file->Exists()) {
        const String why = shell.Complaint().IsEmpty() ? "it made no sound" : WithoutName(shell.Complaint());
        TellFailedBox(tell, "読み上げ結果のサウンドファイルが存在しません", "say", "", why);
        return;
    }
    TellVoice(tell, voice, shell.Result());
    if (InStr(shell.Result(), kCut) > 0) TellFailed(tell, kCut);
    if (IsOfTheLine(shell.Complaint())) TellComplaint(tell, WithoutName(shell.Complaint()));
    std::string why;
    sayData = file->OpenAsSound(sound::Bus::Speech, &why);
    if (sayData) {
        sayData->Play();
        tell(ShowEvent::Kind::Say, {{"voice", voice}, {"text", text}, {"seconds", sayData->Seconds()}});
        TellLevel(tell, file->Path().filename(), sayData->Level());
        PlayToEnd(SoundRef(sayData), tell);
    } else {
        TellFailedBox(tell, "読み上げ結果のファイルをサウンドとして読み込めませんでした", "say", "", why);
    }
    file->Delete();  // kept behaviour 44: not after a kill
}

/// Kept behaviours 45 and 47.
void LoadVoicePage(HTMLViewer& viewer, const FolderItemRef& resourceFolder, const String& page) {
    const auto file = NotNil(NotNil(SpecialFolder::Temporary())->Child("temp.html"));
    // A folder of that name, which nobody should have made, would end the show's thread.
    if (file->Directory()) file->Delete();
    const auto stream = NotNil(TextOutputStream::Create(file));
    stream->Write(page);
    stream->Close();
    viewer.LoadPage(NotNil(resourceFolder)->Child("blank.html"));
    viewer.LoadPage(SpecialFolder::Temporary()->Child("temp.html"));
}

}  // namespace sorakaze
