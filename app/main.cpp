// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QIcon>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "app/Desktop.h"
#include "app/runtime/Signals.h"

namespace {

/// <folder>/Sorakaze.app/Contents/Linux/Sorakaze
std::filesystem::path AppFolder() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    return program.parent_path().parent_path().parent_path().parent_path();
}

bool HasDisplay() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        const char* value = std::getenv(name);
        if (value && *value) return true;
    }
    return false;
}

/// Icons of all sizes beside the program's other resources.
QIcon ApplicationIcon(const std::filesystem::path& appFolder) {
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        const auto file =
            appFolder / "Sorakaze.app/Contents/Resources/icons" / (std::to_string(size) + ".png");
        icon.addFile(QString::fromStdString(file.string()));
    }
    return icon;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace sorakaze;
    if (!HasDisplay()) {
        std::fprintf(stderr, "Sorakaze: there is no display. sorakaze-studio renders shows without one.\n");
        return 1;
    }
    std::signal(SIGPIPE, SIG_IGN);
    Desktop* running = nullptr;
    // Made before all other threads, so that they leave the signals to it.
    const Signals interrupts(
        [&running] {
            if (QCoreApplication* application = QCoreApplication::instance()) {
                QMetaObject::invokeMethod(
                    application, [&running] { running ? running->Quit() : QCoreApplication::quit(); },
                    Qt::QueuedConnection);
            }
        },
        [] {});
    QApplication application(argc, argv);
    QApplication::setApplicationName("Sorakaze");
    QApplication::setApplicationVersion(SORAKAZE_VERSION);
    QApplication::setDesktopFileName("sorakaze");
    const auto appFolder = AppFolder();
    QApplication::setWindowIcon(ApplicationIcon(appFolder));
    const auto only = desktop::SingleInstance::Claim(appFolder, [&running] {
        if (running) running->Raise();
    });
    if (!only) return 0;
    Desktop desktop(appFolder);
    running = &desktop;
    desktop._Main();
    running = nullptr;
    return 0;
}
