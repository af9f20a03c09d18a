// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>

namespace sorakaze::desktop {

/// The application's icon, `size` pixels square: a small radio on the air under a sky. Drawn for its size,
/// with fewer and bolder parts when small; the same bits on every run.
QImage DrawIcon(int size);

}  // namespace sorakaze::desktop
