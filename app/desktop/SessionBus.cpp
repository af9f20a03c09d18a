// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desktop/SessionBus.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QByteArray>

namespace sorakaze::desktop {

bool HasSessionBus() {
    const QByteArray named = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    if (!named.isEmpty()) return !named.contains("autolaunch:");

    const QByteArray socket = qgetenv("XDG_RUNTIME_DIR") + "/bus";
    struct stat found = {};
    return lstat(socket.constData(), &found) == 0 && S_ISSOCK(found.st_mode) && found.st_uid == geteuid();
}

}  // namespace sorakaze::desktop
