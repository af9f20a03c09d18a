// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The show on the session bus (MPRIS 2): desktop panels show what is on the air, and media keys press the
// button. Without a session bus nothing happens. Used on the toolkit's main thread; knows nothing of the
// show.
#pragma once

#include <QString>
#include <functional>
#include <memory>

namespace sorakaze::desktop {

/// What a panel shows.
struct NowPlaying {
    bool onAir = false;
    QString station;  ///< the player's name; empty: the application's
    int number = 0;   ///< of the running track, from 1; 0 when none runs
    QString title;
    QString artist;
    QString album;
    QString path;  ///< of the track's file

    bool operator==(const NowPlaying&) const = default;
};

/// What a panel or a media key may ask for; called on the main thread.
struct Commands {
    /// Presses the button, for play and for stop. The effect may come later and is told by Update.
    std::function<void()> press;
    std::function<void()> raise;  ///< the window to the front
    std::function<void()> quit;
};

class Mpris {
  public:
    explicit Mpris(Commands commands);
    ~Mpris();
    Mpris(const Mpris&) = delete;
    Mpris& operator=(const Mpris&) = delete;

    /// Announces what has changed since the last call.
    void Update(const NowPlaying& now);

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sorakaze::desktop
