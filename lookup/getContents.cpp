// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "show/mainWindow.h"

namespace sorakaze {

/// Without an encyclopaedia nothing is known of any artist.
void mainWindow::getContents(String) {
    wikiContents = String();
}

}  // namespace sorakaze
