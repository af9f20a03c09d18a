// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/runtime/Runtime.h"
#include "show/ShowObserver.h"

namespace sorakaze {

/// Tells of a failure and then shows the box that the user gets for it. The box's details say why.
inline void TellFailedBox(TellShow tell, const String& box, const char* what, const String& path,
                          const String& why) {
    tell(ShowEvent::Kind::Failed, {{"what", what}, {"path", path}, {"why", why}, {"message", box}});
    MsgBox(box);
}

}  // namespace sorakaze
