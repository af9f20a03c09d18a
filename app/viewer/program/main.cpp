// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// sorakaze-viewer FILE: runs the page of a local file, unseen, until it is killed.
#include <QFile>
#include <QGuiApplication>
#include <cstdio>
#include <filesystem>

#include "app/viewer/program/Confinement.h"
#include "app/viewer/program/LoadedPage.h"
#include "app/viewer/program/Surroundings.h"

int main(int argc, char** argv) {
    using namespace sorakaze::viewer;
    if (argc != 2) {
        std::fprintf(stderr, "usage: sorakaze-viewer FILE\n");
        return 2;
    }
    const auto file = std::filesystem::absolute(argv[1]);
    NarrowSurroundings();
    ConfineToFilesOf(file);
    int one = 1;
    QGuiApplication application(one, argv);
    // The name that a sound mixer shows.
    QGuiApplication::setApplicationName("Sorakaze");
    const QUrl url = QUrl::fromLocalFile(QFile::decodeName(file.c_str()));
    QWebEngineProfile profile;
    ConfigureProfile(profile);
    OnlyTheWeb gate(url);
    profile.setUrlRequestInterceptor(&gate);
    const LoadedPage page(url, profile);
    return QGuiApplication::exec();
}
