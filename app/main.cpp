// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <unistd.h>

#include <QApplication>
#include <QIcon>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <stop_token>

#include "app/Desktop.h"
#include "app/Display.h"
#include "app/runtime/Signals.h"

namespace {

using namespace sorakaze;

/// The exit status where no window can be opened.
constexpr int kNoDisplay = 3;

/// <folder>/Sorakaze.app/Contents/Linux/Sorakaze
std::filesystem::path AppFolder() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    return program.parent_path().parent_path().parent_path().parent_path();
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

/// What the signals' thread and an end that comes from elsewhere may reach of the application.
class Reach {
  public:
    /// From here on a signal ends `desktop`. True if one has come already.
    bool Attach(Desktop& desktop) {
        const std::lock_guard lock(mutex_);
        desktop_ = &desktop;
        temporary_ = desktop.FolderOfTheRun();
        return interrupted_;
    }
    void Detach() {
        const std::lock_guard lock(mutex_);
        desktop_ = nullptr;
        temporary_.clear();
    }
    /// Is asked to stop by a signal, also while the application can't be attached yet.
    std::stop_token Interrupted() const { return stop_.get_token(); }
    void Interrupt() {
        const std::lock_guard lock(mutex_);
        interrupted_ = true;
        stop_.request_stop();
        if (!desktop_) return;
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [desktop = desktop_] { desktop->Quit(); }, Qt::QueuedConnection);
    }
    /// For a process that ends at once; false if nothing runs.
    bool CleanUp() {
        const std::lock_guard lock(mutex_);
        std::error_code ignored;
        if (!temporary_.empty()) std::filesystem::remove_all(temporary_, ignored);
        return desktop_ != nullptr;
    }

  private:
    std::mutex mutex_;  ///< guards what follows
    Desktop* desktop_ = nullptr;
    std::filesystem::path temporary_;
    bool interrupted_ = false;
    std::stop_source stop_;
};

Reach& TheReach() {
    static auto* reach = new Reach;  // outlives everything, the exit handlers too
    return *reach;
}

void RunDesktop(const std::filesystem::path& appFolder) {
    Desktop* running = nullptr;
    auto only = desktop::SingleInstance::Claim(appFolder, [&running] {
        if (running) running->Raise();
    });
    if (!only) return;
    Desktop desktop(appFolder, TheReach().Interrupted());
    // Whoever starts the application while this one ends gets one of his own.
    desktop.onQuit = [&only] { only.reset(); };
    running = &desktop;
    if (!TheReach().Attach(desktop)) desktop._Main();
    TheReach().Detach();
    running = nullptr;
}

}  // namespace

int main(int argc, char** argv) {
    if (const std::string why = WhyNoDisplay(); !why.empty()) {
        std::fprintf(stderr, "Sorakaze: %s. sorakaze-studio renders shows without one.\n", why.c_str());
        return kNoDisplay;
    }
    std::signal(SIGPIPE, SIG_IGN);
    // Made before all other threads, so that they leave the signals to it.
    const Signals interrupts([] { TheReach().Interrupt(); }, [] { TheReach().CleanUp(); });
    QApplication application(argc, argv);
    QApplication::setApplicationName("Sorakaze");
    QApplication::setApplicationVersion(SORAKAZE_VERSION);
    QApplication::setDesktopFileName("sorakaze");
    // The toolkit ends the process when the display goes, with the show's threads at work.
    std::atexit([] {
        if (TheReach().CleanUp()) _exit(1);
    });
    const auto appFolder = AppFolder();
    QApplication::setWindowIcon(ApplicationIcon(appFolder));
    RunDesktop(appFolder);
    return 0;
}
