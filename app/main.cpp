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
#include <string>

#include "app/Desktop.h"
#include "app/Display.h"
#include "app/runtime/Signals.h"
#include "base/PrintableText.h"
#include "host/StationPaths.h"

namespace {

using namespace sorakaze;

/// The exit status where no window can be opened.
constexpr int kNoDisplay = 3;
constexpr int kWrongCall = 2;

QIcon ApplicationIcon(const std::filesystem::path& appFolder) {
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        const auto file = ResourcesOfStation(appFolder) / "icons" / (std::to_string(size) + ".png");
        icon.addFile(QString::fromStdString(file.string()));
    }
    return icon;
}

/// The running application as the signals' thread and the process's exit handler may use it.
class RunningDesktop {
  public:
    /// From now on a signal ends `desktop`. Returns true if one has come already.
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
    /// Stopped by a signal, also by one that comes before Attach.
    std::stop_token Interrupted() const { return stop_.get_token(); }
    void Interrupt() {
        const std::lock_guard lock(mutex_);
        interrupted_ = true;
        stop_.request_stop();
        if (!desktop_) return;
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [desktop = desktop_] { desktop->Quit(); }, Qt::QueuedConnection);
    }
    /// Removes the run's files, for a process that ends at once. Returns false if nothing runs.
    bool CleanUp() {
        const std::lock_guard lock(mutex_);
        std::error_code ignored;
        if (!temporary_.empty()) std::filesystem::remove_all(temporary_, ignored);
        return desktop_ != nullptr;
    }

  private:
    std::mutex mutex_;  ///< guards the rest
    Desktop* desktop_ = nullptr;
    std::filesystem::path temporary_;
    bool interrupted_ = false;
    std::stop_source stop_;
};

RunningDesktop& Running() {
    static auto* running = new RunningDesktop;  // outlives everything, the exit handlers too
    return *running;
}

void RunDesktop(const std::filesystem::path& appFolder) {
    Desktop* running = nullptr;
    auto only = desktop::SingleInstance::Claim(appFolder, [&running] {
        if (running) running->Raise();
    });
    if (!only) return;
    Desktop desktop(appFolder, Running().Interrupted());
    // The application can be started anew while this one ends.
    desktop.onQuit = [&only] { only.reset(); };
    running = &desktop;
    if (!Running().Attach(desktop)) desktop._Main();
    Running().Detach();
    running = nullptr;
}

/// The application takes nothing else of its own; the toolkit takes a few more.
bool AnswersOption(int argc, char** argv) {
    const std::string option = argc == 2 ? argv[1] : "";
    if (option == "--version") {
        std::puts("Sorakaze " SORAKAZE_VERSION);
    } else if (option == "--help" || option == "-h") {
        std::puts(
            "Sorakaze: opens the window of the station that this program is in.\n"
            "Usage: Sorakaze [--help | --version]\n"
            "sorakaze-studio beside it renders shows without a window.");
    } else {
        return false;
    }
    return true;
}

/// 2 for a word that nobody takes.
int CheckArguments() {
    const QStringList words = QCoreApplication::arguments();
    if (words.size() < 2) return 0;
    std::fprintf(stderr, "Sorakaze: \"%s\" is not understood: there are --help and --version.\n",
                 Printable(words[1].toStdString()).c_str());
    return kWrongCall;
}

}  // namespace

int main(int argc, char** argv) {
    if (AnswersOption(argc, argv)) return 0;
    if (const std::string why = WhyNoDisplay(); !why.empty()) {
        std::fprintf(stderr, "Sorakaze: %s. sorakaze-studio renders shows without one.\n", why.c_str());
        return kNoDisplay;
    }
    std::signal(SIGPIPE, SIG_IGN);
    // Made before all other threads, so that they leave the signals to it.
    const Signals interrupts([] { Running().Interrupt(); }, [] { Running().CleanUp(); });
    QApplication application(argc, argv);
    if (const int status = CheckArguments(); status != 0) return status;
    QApplication::setApplicationName("Sorakaze");
    QApplication::setApplicationVersion(SORAKAZE_VERSION);
    QApplication::setDesktopFileName("sorakaze");
    // The toolkit ends the process when the display goes away, while the show's threads run.
    std::atexit([] {
        if (Running().CleanUp()) _exit(1);
    });
    const auto appFolder = StationOfThisProgram();
    QApplication::setWindowIcon(ApplicationIcon(appFolder));
    RunDesktop(appFolder);
    return 0;
}
