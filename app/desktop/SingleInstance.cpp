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

/// How long a second instance tries to reach the first one's socket: the first may be starting or ending.
constexpr auto kSearchTime = 2s;
constexpr auto kSearchInterval = 20ms;

class UncheckedInstance : public SingleInstance {};

/// The instance that runs. A connection means that another one was started. Main thread only.
class FirstInstance : public SingleInstance {
  public:
    FirstInstance(std::unique_ptr<FileLock> lock, const QString& socket, std::function<void()> onSecond)
        : lock_(std::move(lock)), onSecond_(std::move(onSecond)) {
        server_.setSocketOptions(QLocalServer::UserAccessOption);
        QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] { Answer(); });
        // Whoever holds the lock owns the socket: an existing one was left by an instance that crashed.
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
    QLocalServer server_;  ///< last: the socket is removed before the lock
};

bool AskToRaise(const QString& socket) {
    QLocalSocket first;
    first.connectToServer(socket);
    return first.waitForConnected(int(std::chrono::milliseconds(kSearchTime).count()));
}

}  // namespace

std::unique_ptr<SingleInstance> SingleInstance::Claim(const std::filesystem::path& folder,
                                                      std::function<void()> onSecond) {
    const std::optional<InstancePaths> paths = PathsOf(folder);
    if (!paths) return std::make_unique<UncheckedInstance>();
    const QDeadlineTimer deadline(kSearchTime);
    do {
        auto lock = std::make_unique<FileLock>();
        switch (lock->Try(paths->lock)) {
            case FileLock::Outcome::Taken:
                return std::make_unique<FirstInstance>(std::move(lock), paths->socket, std::move(onSecond));
            case FileLock::Outcome::Impossible:
                return std::make_unique<UncheckedInstance>();
            case FileLock::Outcome::HeldByAnother:
                break;
        }
        if (AskToRaise(paths->socket)) return nullptr;
        QThread::msleep(std::chrono::milliseconds(kSearchInterval).count());
    } while (!deadline.hasExpired());
    return nullptr;
}

}  // namespace sorakaze::desktop
