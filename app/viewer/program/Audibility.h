// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Decides whether the page is heard. The engine itself tells of it when it has been heard for a moment, and
// of the end a tenth of a second late; so a script in every frame, which the page can't reach, tells when
// audio elements play. The engine's word is for all other sound, and for pages that hang.
#pragma once

#include <QString>
#include <functional>

namespace sorakaze::viewer {

class Audibility {
  public:
    /// `tell` is called with each change; at first the page is silent.
    explicit Audibility(std::function<void(bool)> tell);

    /// To be run in a world of its own in every frame, from its creation on.
    QString Script() const;
    /// Takes what a script writes to the console. Other messages have no effect.
    void OnConsole(const QString& message);
    /// What the engine says has changed.
    void OnEngine(bool recentlyAudible);
    /// The processes of all frames are gone.
    void OnRendererEnd();

  private:
    void Set(bool audible);

    const std::function<void(bool)> tell_;
    const QString secret_;  ///< begins the script's messages
    int playing_ = 0;       ///< elements
    bool engineAudible_ = false;
    bool audible_ = false;
};

}  // namespace sorakaze::viewer
