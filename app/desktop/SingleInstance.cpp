// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desktop/SingleInstance.h"

#include <QDeadlineTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QObject>
#include <QThread>
#include <utility>

#include "app/desktop/InstanceFiles.h"

namespace sorakaze::desktop {
namespace {

using namespace std::chrono_literals;

/// How long a second instance looks for the first one's socket: the first may be just starting, or just
/// ending.
constexpr auto kPatience = 2s;
constexpr auto kPause = 20ms;

class Unchecked : public SingleInstance {};

/// The instance that runs. A connection is the whole message: another one was started. Main thread only.
class First : public SingleInstance {
  public:
    First(std::unique_ptr<FileLock> lock, const QString& socket, std::function<void()> onSecond)
        : lock_(std::move(lock)), onSecond_(std::move(onSecond)) {
        server_.setSocketOptions(QLocalServer::UserAccessOption);
        QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] { Answer(); });
        // Who holds the lock owns the socket: one that lies there was left by an instance that crashed.
        QLocalServer::removeServer(socket);
        // Without a socket the lock still keeps others from running; they just can't bring this window to the
        // front.
        server_.listen(socket);
    }

  private:
    void Answer() {
        bool asked = false;
        while (QLocalSocket* connection = server_.nextPendingConnection()) {
            connection->deleteLater();
            asked = true;
        }
        if (asked && onSecond_) onSecond_();
    }

    std::unique_ptr<FileLock> lock_;
    std::function<void()> onSecond_;
    QLocalServer server_;  ///< last: the socket goes before the lock
};

bool Tell(const QString& socket) {
    QLocalSocket first;
    first.connectToServer(socket);
    return first.waitForConnected(int(std::chrono::milliseconds(kPatience).count()));
}

}  // namespace

std::unique_ptr<SingleInstance> SingleInstance::Claim(const std::filesystem::path& folder,
                                                      std::function<void()> onSecond) {
    const std::optional<InstancePaths> paths = PathsOf(folder);
    if (!paths) return std::make_unique<Unchecked>();
    const QDeadlineTimer deadline(kPatience);
    do {
        auto lock = std::make_unique<FileLock>();
        switch (lock->Try(paths->lock)) {
            case FileLock::Outcome::Taken:
                return std::make_unique<First>(std::move(lock), paths->socket, std::move(onSecond));
            case FileLock::Outcome::Impossible:
                return std::make_unique<Unchecked>();
            case FileLock::Outcome::HeldByAnother:
                break;
        }
        if (Tell(paths->socket)) return nullptr;
        QThread::msleep(std::chrono::milliseconds(kPause).count());
    } while (!deadline.hasExpired());
    return nullptr;
}

}  // namespace sorakaze::desktop
