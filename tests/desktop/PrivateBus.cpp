// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/PrivateBus.h"

#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusPendingCallWatcher>
#include <QFile>

#include "tests/desktop/RunUntil.h"

namespace sorakaze::desktop {
namespace {

constexpr char kPath[] = "/org/mpris/MediaPlayer2";
constexpr char kProperties[] = "org.freedesktop.DBus.Properties";

// No services of the machine's own are started on this bus.
constexpr char kConfiguration[] =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><listen>unix:path=%1/bus</listen>
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy></busconfig>)";

}  // namespace

const QTemporaryDir& PrivateBus::Folder() {
    static const QTemporaryDir folder;
    return folder;
}

void PrivateBus::SetEnvironment() {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + QFile::encodeName(Folder().filePath("bus")));
}

PrivateBus::PrivateBus() {
    SetEnvironment();
    QFile::remove(Folder().filePath("bus"));
    QFile file(Folder().filePath("bus.conf"));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QString(kConfiguration).arg(Folder().path()).toUtf8());
    file.close();
    daemon_.start("dbus-daemon",
                  {"--config-file=" + file.fileName(), "--print-address", "--nofork", "--nopidfile"});
    EXPECT_TRUE(daemon_.waitForStarted()) << "dbus-daemon is needed";
    while (!daemon_.canReadLine() && daemon_.waitForReadyRead()) continue;
}

void PrivateBus::Kill() {
    daemon_.kill();
    daemon_.waitForFinished();
}

Panel::Panel() : connection_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, "panel")) {
    EXPECT_TRUE(connection_.isConnected());
    connection_.connect(QString(), kPath, kProperties, "PropertiesChanged", this,
                        SLOT(Note(QString, QVariantMap, QStringList)));
}

Panel::~Panel() {
    QDBusConnection::disconnectFromBus("panel");
}

QDBusMessage Panel::Send(const QDBusMessage& message) {
    // The player answers on this very thread, so that waiting for it means running its events.
    const QDBusPendingCallWatcher answer(connection_.asyncCall(message));
    EXPECT_TRUE(RunUntil([&] { return answer.isFinished(); })) << "no answer";
    QCoreApplication::processEvents();
    return answer.reply();
}

QDBusMessage Panel::Call(const QString& interface, const QString& method, const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(service, kPath, interface, method);
    message.setArguments(arguments);
    return Send(message);
}

QVariantMap Panel::Properties(const QString& interface) {
    const QDBusMessage answer = Call(kProperties, "GetAll", {interface});
    EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage) << answer.errorMessage().toStdString();
    return answer.arguments().isEmpty() ? QVariantMap() : qdbus_cast<QVariantMap>(answer.arguments().at(0));
}

QStringList Panel::Players() {
    constexpr char kBus[] = "org.freedesktop.DBus";
    const QDBusMessage answer =
        Send(QDBusMessage::createMethodCall(kBus, "/org/freedesktop/DBus", kBus, "ListNames"));
    return answer.arguments().at(0).toStringList().filter("org.mpris.MediaPlayer2.");
}

std::vector<Panel::Change> Panel::Changes() {
    return std::exchange(changes_, {});
}

void Panel::Note(const QString& interface, const QVariantMap& values, const QStringList& invalidated) {
    EXPECT_TRUE(invalidated.isEmpty());
    changes_.push_back({interface, values});
}

}  // namespace sorakaze::desktop
