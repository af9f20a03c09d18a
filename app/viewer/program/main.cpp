// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// sorakaze-viewer FILE: runs the page of a local file, unseen, until it is killed.
#include <QFileInfo>
#include <QGuiApplication>
#include <cstdio>

#include "app/viewer/program/LoadedPage.h"
#include "app/viewer/program/Surroundings.h"

int main(int argc, char** argv) {
    using namespace sorakaze::viewer;
    if (argc != 2) {
        std::fprintf(stderr, "usage: sorakaze-viewer FILE\n");
        return 2;
    }
    const QUrl url = QUrl::fromLocalFile(QFileInfo(QFile::decodeName(argv[1])).absoluteFilePath());
    NarrowSurroundings();
    int one = 1;
    QGuiApplication application(one, argv);
    // The name that a sound mixer shows.
    QGuiApplication::setApplicationName("Sorakaze");
    QWebEngineProfile profile;
    ConfigureProfile(profile);
    OnlyTheWeb gate(url);
    profile.setUrlRequestInterceptor(&gate);
    const LoadedPage page(url, profile);
    return QGuiApplication::exec();
}
