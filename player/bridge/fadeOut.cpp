// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/Runtime.h"
#include "show/mainWindow.h"

namespace sorakaze {

/// Kept behaviour 41.
void mainWindow::fadeOut(const SoundRef& sound, double seconds) {
    if (!sound || !sound->IsPlaying() || sound->Volume() <= 0) return;
    // The show may replace its sound meanwhile: this copy keeps the sound until it is silent.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the window's reference may change
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
