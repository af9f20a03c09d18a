// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/bridge/PlayFile.h"

#include "app/runtime/Runtime.h"
#include "show/LevelEvent.h"

namespace sorakaze {
namespace {

/// The volume of a jingle or an effect. Speech keeps a sound's full one.
constexpr std::int32_t kEffectVolume = 70;

}  // namespace

void PlayFile(const FolderItemRef& appFolder, const String& argument, Random& random, SoundRef& soundData,
              TellShow tell) {
    FolderItemRef item = GetFolderItem(NotNil(appFolder)->ShellPath() + "/" + argument, kShellPath);
    if (!item || !item->Exists()) {
        MsgBox(String("指定したサウンドファイル") + argument + "が存在しません");
        return;
    }
    // Kept behaviours 38 and 39.
    if (item->Directory()) item = NotNil(item->Item(random.InRange(1, item->Count())));
    soundData = item->OpenAsSound();  // kept behaviour 40
    if (!soundData) {
        MsgBox(String("指定したファイル") + argument + "をサウンドとして読み込めませんでした");
        return;
    }
    soundData->SetVolume(kEffectVolume);
    soundData->Play();
    tell(ShowEvent::Kind::Sound, {{"path", item->Path().string()}});
    TellLevel(tell, item->Path(), soundData->Level());
}

}  // namespace sorakaze
