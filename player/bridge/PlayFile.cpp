// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "player/bridge/PlayFile.h"

#include "app/runtime/Runtime.h"
#include "show/FailedBox.h"
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
        TellFailedBox(tell, String("指定したサウンドファイル") + argument + "が存在しません", "sound",
                      item ? item->Path().string() : "", "there is no such file");
        return;
    }
    // Kept behaviours 38 and 39.
    if (item->Directory()) {
        item = item->Item(random.InRange(1, item->Count()));
        if (!item) throw NilObjectException("The folder " + argument.Bytes() + " is empty.");
    }
    std::string why;
    soundData = item->OpenAsSound(sound::Bus::Effects, &why);  // kept behaviour 40
    if (!soundData) {
        TellFailedBox(tell, String("指定したファイル") + argument + "をサウンドとして読み込めませんでした",
                      "sound", item->Path().string(), why);
        return;
    }
    soundData->SetVolume(kEffectVolume);
    soundData->Play();
    tell(ShowEvent::Kind::Sound, {{"path", item->Path().string()}});
    TellLevel(tell, item->Path(), soundData->Level());
}

}  // namespace sorakaze
