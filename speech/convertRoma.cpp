// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "show/mainWindow.h"

namespace sorakaze {

/// Without a table of readings the text stays as it is: the voice says of it what it can.
String mainWindow::convertRoma(const String& text) {
    return text;
}

}  // namespace sorakaze
