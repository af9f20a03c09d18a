// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <QTemporaryDir>
#include <QVariantMap>
#include <vector>

namespace sorakaze::desktop {

/// A message bus of the test's own, in place of the session bus. A process keeps the address that it has once
/// read, so all buses of a run, one after the other, have the same.
class PrivateBus {
  public:
    PrivateBus();
    ~PrivateBus() { Kill(); }

    /// Makes the address of the buses to come that of the session bus.
    static void SetEnvironment();
    /// The bus dies at once, as with the end of a session.
    void Kill();

  private:
    static const QTemporaryDir& Folder();

    QProcess daemon_;
};

/// Another program on the bus: a panel, or the keyboard's media keys.
class Panel : public QObject {
    Q_OBJECT

  public:
    Panel();
    ~Panel() override;

    struct Change {
        QString interface;
        QVariantMap values;
    };

    /// The answer, error or not. Changes that were announced before it have come when it returns.
    QDBusMessage Call(const QString& interface, const QString& method, const QVariantList& arguments = {});
    QVariantMap Properties(const QString& interface);
    /// The names of media players that are on the bus.
    QStringList Players();
    /// What was announced since the last call.
    std::vector<Change> Changes();

    QString service = "org.mpris.MediaPlayer2.sorakaze";

  private slots:
    void Note(const QString& interface, const QVariantMap& values, const QStringList& invalidated);

  private:
    QDBusMessage Send(const QDBusMessage& message);

    QDBusConnection connection_;
    std::vector<Change> changes_;
};

}  // namespace sorakaze::desktop
