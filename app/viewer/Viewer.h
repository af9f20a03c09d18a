// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// Runs pages invisibly, each in a process of its own: the program sorakaze-viewer, which holds the web
// engine. So the application doesn't load the engine, a page that crashes or hangs is gone with the next
// load, and pages can't reach each other. What a page plays goes straight to the sound server. Lives on the
// main thread.
#pragma once

#include <QObject>
#include <QProcess>
#include <QSet>
#include <QString>
#include <QTimer>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "app/viewer/Page.h"

namespace sorakaze::viewer {

class Viewer : public QObject {
  public:
    /// Nothing is started before the first load.
    explicit Viewer(std::filesystem::path program);
    /// Kills the page's processes.
    ~Viewer() override;

    /// Runs the page that the local file (not a link) holds now, replacing the present page. Of loads in
    /// quick succession only the last may be started. Any thread.
    void Load(const std::filesystem::path& page, Service service = {});

    /// `tell` is called on the main thread when a page begins to be heard, and when it isn't any more: it is
    /// silent, replaced, or at its end. Set before the first load.
    void OnAudible(std::function<void(bool)> tell) { tellAudible_ = std::move(tell); }

    /// `tell` is called on the main thread when a page can't be heard, with the reason: the first time for
    /// each reason, since a show has many pages. Set before the first load.
    void OnFailure(std::function<void(const std::string&)> tell) { tellFailure_ = std::move(tell); }

  private:
    void Begin();
    void Start(const Page& page);
    void Listen(QProcess& process);
    void SetAudible(bool audible);
    /// Kills the process with all that it has started, without waiting.
    static void End(QProcess& process);
    void ReportFailure(const QString& why);
    /// Prints what the running program lacks, the first time only.
    void ReportWarning(const QByteArray& line);

    const std::filesystem::path program_;
    QTimer startDelay_;            ///< when it is over the page is started
    QProcess* process_ = nullptr;  ///< a child object, as are those that are ending
    std::function<void(bool)> tellAudible_;
    bool audible_ = false;
    std::function<void(const std::string&)> tellFailure_;
    QSet<QString> reportedFailures_;
    bool warningReported_ = false;

    std::mutex mutex_;          ///< guards what follows
    std::optional<Page> next_;  ///< the last one to load; empty if it can't be read
};

}  // namespace sorakaze::viewer
