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

namespace sorakaze::viewer {

class Viewer : public QObject {
  public:
    /// Nothing is started before the first load.
    explicit Viewer(std::filesystem::path program);
    /// The page ends at once, with all its processes.
    ~Viewer() override;

    /// Runs the page of a local file in place of what is there, and returns at once. Of loads in quick
    /// succession only the last may be begun. Any thread.
    void Load(std::filesystem::path page);

  private:
    void Begin();
    /// Ends the process with all that it has started, without waiting.
    static void End(QProcess& process);
    /// The first time only: a show has many pages, and its user one standard error.
    void Complain(const QString& why);

    const std::filesystem::path program_;
    QTimer hesitation_;            ///< then the page begins
    QProcess* process_ = nullptr;  ///< a child object, as are those that are ending
    bool complained_ = false;

    std::mutex mutex_;            ///< guards what follows
    std::filesystem::path next_;  ///< the last one asked for
};

}  // namespace sorakaze::viewer
