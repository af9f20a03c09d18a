// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The place for pages, out of everybody's sight: each page that is loaded runs in a process of its own, the
// program sorakaze-viewer, which holds the web engine. So the application neither links nor loads the engine,
// a page that crashes or hangs is gone with the next load, and nothing of one page reaches another. What a
// page plays goes straight to the sound server. Lives on the main thread.
#pragma once

#include <QObject>
#include <QProcess>
#include <QTimer>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include "app/viewer/Page.h"

namespace sorakaze::viewer {

class Viewer : public QObject {
  public:
    /// Nothing is started before the first load.
    explicit Viewer(std::filesystem::path program);
    /// The page ends at once, with all its processes.
    ~Viewer() override;

    /// Runs the page that the local file holds now, no link, in place of what is there. Of loads in quick
    /// succession only the last may be begun. Any thread.
    void Load(const std::filesystem::path& page, Service service = {});

  private:
    void Begin();
    void Start(const Page& page);
    /// Ends the process with all that it has started, without waiting.
    static void End(QProcess& process);
    /// The first time only: a show has many pages, and its user one standard error.
    void ReportFailure(const QString& why);
    /// What the program lacks, though it runs; the first time only as well.
    void ReportWarning(const QByteArray& line);

    const std::filesystem::path program_;
    QTimer startDelay_;            ///< then the page begins
    QProcess* process_ = nullptr;  ///< a child object, as are those that are ending
    bool failureReported_ = false;
    bool warningReported_ = false;

    std::mutex mutex_;          ///< guards what follows
    std::optional<Page> next_;  ///< the last one asked for; empty: it can't be read
};

}  // namespace sorakaze::viewer
