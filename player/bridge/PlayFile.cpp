// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/bridge/PlayFile.h"

#include "app/runtime/Runtime.h"

namespace sorakaze {
namespace {

/// The volume of a jingle or an effect. Speech keeps a sound's full one.
constexpr std::int32_t kEffectVolume = 70;

}  // namespace

void PlayFile(mainWindow& window, Random& random, const String& argument) {
    FolderItemRef item = GetFolderItem(NotNil(window.appFolder)->ShellPath() + "/" + argument, kShellPath);
    if (!item || !item->Exists()) {
        MsgBox(String("指定したサウンドファイル") + argument + "が存在しません");
        return;
    }
    if (item->Directory()) item = NotNil(item->Item(random.InRange(1, item->Count())));
    window.soundData = item->OpenAsSound();
    if (!window.soundData) {
        MsgBox(String("指定したファイル") + argument + "をサウンドとして読み込めませんでした");
        return;
    }
    window.soundData->SetVolume(kEffectVolume);
    window.soundData->Play();
    window.tell(ShowEvent::Kind::Sound, {{"path", item->Path().string()}});
}

void mainWindow::fadeOut(const SoundRef& sound, double seconds) {
    if (!sound || !sound->IsPlaying() || sound->Volume() <= 0) return;
    // The show may replace its sound meanwhile: this one is held until it is silent.
    const SoundRef fading = sound;
    const std::int32_t start = fading->Volume();
    const auto waitTicks = [](double limit) {
        const std::int32_t begin = Ticks();
        WaitWhile([begin, limit] { return static_cast<double>(Ticks() - begin) < limit; });
    };
    for (std::int32_t volume = start; volume >= 0; --volume) {
        fading->SetVolume(volume);
        waitTicks(seconds * 60.0 / start);
        Yield();
    }
    waitTicks(30.0 / start);
    fading->Stop();
}

}  // namespace sorakaze
