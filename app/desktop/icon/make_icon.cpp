// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// make-icon FOLDER SIZE...: writes SIZE.png into FOLDER, which it makes if need be.
#include <QDir>
#include <QFile>
#include <cstdio>

#include "app/desktop/icon/Icon.h"

int main(int argc, char** argv) {
    const QString folder = argc > 2 ? QFile::decodeName(argv[1]) : QString();
    if (folder.isEmpty()) {
        std::fputs("usage: make-icon FOLDER SIZE...\n", stderr);
        return 2;
    }
    QDir().mkpath(folder);
    for (int i = 2; i < argc; ++i) {
        const int size = QByteArray(argv[i]).toInt();
        const QString path = QStringLiteral("%1/%2.png").arg(folder).arg(size);
        if (size < 8 || size > 1024 || !sorakaze::desktop::DrawIcon(size).save(path, "PNG")) {
            std::fprintf(stderr, "make-icon: can't write %s\n", QFile::encodeName(path).constData());
            return 1;
        }
    }
    return 0;
}
