// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include "app/desktop/Mpris.h"
#include "tests/app/desktop/RunUntil.h"

namespace sorakaze::desktop {
namespace {

constexpr char kRoot[] = "org.mpris.MediaPlayer2";
constexpr char kPlayer[] = "org.mpris.MediaPlayer2.Player";

constexpr char kPath[] = "/org/mpris/MediaPlayer2";
constexpr char kProperties[] = "org.freedesktop.DBus.Properties";

/// A message bus of the test's own, in place of the session bus and of the one in the runtime folder. A
/// process keeps the address that it has once read, so all buses of a run, one after the other, have the
/// same.
struct PrivateBus {
    PrivateBus() {
        static const QTemporaryDir folder;
        const QString socket = folder.filePath("bus");
        QFile::remove(socket);
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(folder.path()));
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + QFile::encodeName(socket));
        daemon.start("dbus-daemon", {"--session", "--address=unix:path=" + socket, "--print-address",
                                     "--nofork", "--nopidfile"});
        while (!daemon.canReadLine() && daemon.waitForReadyRead()) continue;
    }
    ~PrivateBus() { Kill(); }
    /// The bus dies at once, as with the end of a session.
    void Kill() {
        daemon.kill();
        daemon.waitForFinished();
    }

    QProcess daemon;
};

/// Another program on the bus: a panel, or the keyboard's media keys.
class Panel : public QObject {
    Q_OBJECT

  public:
    Panel() {
        EXPECT_TRUE(connection.isConnected()) << "dbus-daemon is needed";
        connection.connect(QString(), kPath, kProperties, "PropertiesChanged", this,
                           SLOT(Note(QString, QVariantMap, QStringList)));
    }
    ~Panel() override { QDBusConnection::disconnectFromBus("panel"); }

    /// The answer, error or not. Changes that were announced before it have come when it returns.
    QDBusMessage Call(const QString& interface, const QString& method, const QVariantList& arguments = {}) {
        QDBusMessage message = QDBusMessage::createMethodCall(service, kPath, interface, method);
        message.setArguments(arguments);
        // The player answers on this very thread, so that waiting for it means running its events.
        const QDBusPendingCallWatcher answer(connection.asyncCall(message));
        EXPECT_TRUE(RunUntil([&] { return answer.isFinished(); })) << "no answer";
        QCoreApplication::processEvents();
        return answer.reply();
    }
    QVariantMap Properties(const QString& interface) {
        return qdbus_cast<QVariantMap>(Call(kProperties, "GetAll", {interface}).arguments().value(0));
    }
    /// The names of media players that are on the bus.
    QStringList Players() {
        return connection.interface()->registeredServiceNames().value().filter("org.mpris.MediaPlayer2.");
    }

    QString service = "org.mpris.MediaPlayer2.sorakaze";
    QDBusConnection connection = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "panel");
    /// What was announced since somebody took it: the interface and the values.
    std::vector<std::pair<QString, QVariantMap>> changes;

  private slots:
    void Note(const QString& interface, const QVariantMap& values, const QStringList&) {
        changes.emplace_back(interface, values);
    }
};

/// A station whose button does what it says, and a panel that looks at it.
struct MprisTest : testing::Test {
    void Press() {
        ++presses;
        if (delayed) return;
        now.onAir = !now.onAir;
        mpris.Update(now);
    }

    /// The presses so far, after what was asked for has been done.
    int Presses() {
        panel.Properties(kRoot);
        return presses;
    }

    QString Status() { return panel.Properties(kPlayer).value("PlaybackStatus").toString(); }

    PrivateBus bus;
    bool delayed = false;
    int presses = 0;
    int raises = 0;
    int quits = 0;
    NowPlaying now;
    Mpris mpris{{[this] { Press(); }, [this] { ++raises; }, [this] { ++quits; }}};
    Panel panel;
};

TEST_F(MprisTest, TheMediaKeyIsTheButtonAndPlayAndStopKnowTheStateEvenBeforeItShows) {
    const auto press = [&](const char* method, int expected, const char* why) {
        panel.Call(kPlayer, method);
        EXPECT_EQ(Presses(), expected) << method << ": " << why;
    };
    press("PlayPause", 1, "the button");
    EXPECT_EQ(Status(), "Playing");
    press("Play", 1, "on the air already");
    press("Stop", 2, "the button");
    press("Stop", 2, "off the air already");
    for (const char* never : {"Pause", "Next", "Previous"}) press(never, 2, "a station has no such thing");
    delayed = true;
    press("Play", 3, "the button");
    press("Play", 3, "the start is still to come");
    press("Stop", 4, "the button");
    press("Stop", 4, "a second stop would be a start");
    now.onAir = true;
    mpris.Update(now);
    press("Stop", 4, "the stop is still to come");
    now.onAir = false;
    mpris.Update(now);
    press("Play", 5, "the button");
    panel.Call(kRoot, "Raise");
    panel.Call(kRoot, "Quit");
    EXPECT_TRUE(RunUntil([&] { return raises == 1 && quits == 1; }));
}

TEST_F(MprisTest, ASecondStationHasANameOfItsOwnAndAnswersACallBeforeItIsCarriedOut) {
    const QString taken = panel.service;
    panel.service += ".instance" + QString::number(QCoreApplication::applicationPid());
    {
        const Mpris second({{},
                            [&] {
                                EXPECT_EQ(panel.Properties(kRoot).size(), 7) << "a caller waits";
                                ++raises;
                            },
                            {}});
        QStringList players = panel.Players();
        players.sort();
        EXPECT_EQ(players, (QStringList{taken, panel.service}));
        EXPECT_EQ(panel.Call(kRoot, "Raise").type(), QDBusMessage::ReplyMessage);
        EXPECT_TRUE(RunUntil([&] { return raises == 1; }));
        panel.Call(kPlayer, "PlayPause");  // nothing is bound to it
        EXPECT_EQ(Presses(), 0);
    }
    EXPECT_TRUE(RunUntil([&] { return panel.Players() == QStringList{taken}; }));
}

TEST_F(MprisTest, AnnouncesExactlyWhatChanged) {
    const auto expect = [this](const char* change, std::vector<std::pair<QString, QStringList>> expected) {
        mpris.Update(now);
        panel.Properties(kRoot);
        std::vector<std::pair<QString, QStringList>> seen;
        for (const auto& [interface, values] : std::exchange(panel.changes, {}))
            seen.emplace_back(interface, values.keys());
        EXPECT_EQ(seen, expected) << change;
    };
    expect("nothing", {});
    now.onAir = true;
    expect("on air", {{kPlayer, {"PlaybackStatus"}}});
    now.station = "Radio 空";
    expect("station", {{kRoot, {"Identity"}}});
    now.title = "not on yet";
    expect("a title without a track", {});
    now.number = 1;
    expect("track", {{kPlayer, {"Metadata"}}});
    now = {};
    expect("all", {{kRoot, {"Identity"}}, {kPlayer, {"Metadata", "PlaybackStatus"}}});
}

TEST_F(MprisTest, TheTrackGoesOutInTheTypesThatPanelsExpect) {
    now = {true, "", 12, "A \"quoted\" 曲", "Björk & Co", "", "/music/a b/ü#1?%.flac"};
    mpris.Update(now);
    const auto shown = qdbus_cast<QVariantMap>(panel.Properties(kPlayer).value("Metadata"));
    EXPECT_EQ(shown.keys(), (QStringList{"mpris:trackid", "xesam:artist", "xesam:title", "xesam:url"}));
    EXPECT_EQ(shown.value("mpris:trackid").value<QDBusObjectPath>().path(), "/org/sorakaze/track/12");
    EXPECT_EQ(shown.value("xesam:title"), now.title);
    EXPECT_EQ(shown.value("xesam:artist"), QStringList{now.artist});
    EXPECT_EQ(shown.value("xesam:url"), "file:///music/a%20b/%C3%BC%231%3F%25.flac");

    // What no bus carries as text must not cost the connection.
    now.title = QString(QChar(0xd800)) + QChar(0) + QChar(0xffff) + "end";
    mpris.Update(now);
    EXPECT_EQ(Status(), "Playing");
}

TEST_F(MprisTest, WithoutABusNothingHappens) {
    bus.Kill();
    now.onAir = true;
    mpris.Update(now);
    EXPECT_TRUE(RunUntil([&] { return !panel.connection.isConnected(); }));
    now.number = 3;
    mpris.Update(now);

    static int messages = 0;
    const auto before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) { ++messages; });
    for (const QByteArray& address : {qgetenv("DBUS_SESSION_BUS_ADDRESS"), {}, QByteArray("autolaunch:")}) {
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        Mpris({}).Update({true, "Radio", 1, "t", "a", "b", "/c"});
        QCoreApplication::processEvents();
    }
    qInstallMessageHandler(before);
    EXPECT_EQ(messages, 0);
}

}  // namespace
}  // namespace sorakaze::desktop

#include "MprisTest.moc"
