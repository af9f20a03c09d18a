// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QFile>

#include "app/desktop/Mpris.h"
#include "tests/desktop/PrivateBus.h"
#include "tests/desktop/RunUntil.h"

namespace sorakaze::desktop {
namespace {

constexpr char kRoot[] = "org.mpris.MediaPlayer2";
constexpr char kPlayer[] = "org.mpris.MediaPlayer2.Player";

QVariantMap Map(const QVariant& value) {
    return qdbus_cast<QVariantMap>(value);
}

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

TEST_F(MprisTest, ShowsAStationThatCanOnlyBeSwitchedOnAndOff) {
    const QVariantMap root = panel.Properties(kRoot);
    EXPECT_EQ(root.value("Identity"), "Sorakaze");
    EXPECT_EQ(root.value("DesktopEntry"), "sorakaze");
    EXPECT_EQ(root.value("CanQuit"), true);
    EXPECT_EQ(root.value("CanRaise"), true);
    EXPECT_EQ(root.value("HasTrackList"), false);
    EXPECT_EQ(root.value("SupportedUriSchemes"), QStringList());
    EXPECT_EQ(root.value("SupportedMimeTypes"), QStringList());

    const QVariantMap player = panel.Properties(kPlayer);
    EXPECT_EQ(player.value("PlaybackStatus"), "Stopped");
    EXPECT_EQ(player.value("CanPlay"), true);
    EXPECT_EQ(player.value("CanControl"), true);
    for (const char* never : {"CanPause", "CanSeek", "CanGoNext", "CanGoPrevious"})
        EXPECT_EQ(player.value(never), false) << never;
    for (const char* one : {"Rate", "MinimumRate", "MaximumRate", "Volume"})
        EXPECT_EQ(player.value(one), 1.0) << one;
    EXPECT_EQ(player.value("Position"), QVariant(0LL));
    EXPECT_TRUE(Map(player.value("Metadata")).isEmpty());
}

TEST_F(MprisTest, TheMediaKeyIsTheButtonAndPlayAndStopKnowTheState) {
    panel.Call(kPlayer, "PlayPause");
    EXPECT_EQ(Presses(), 1);
    EXPECT_EQ(Status(), "Playing");
    panel.Call(kPlayer, "Play");
    EXPECT_EQ(Presses(), 1) << "on the air already";
    panel.Call(kPlayer, "Stop");
    EXPECT_EQ(Presses(), 2);
    panel.Call(kPlayer, "Stop");
    EXPECT_EQ(Presses(), 2) << "off the air already";
    panel.Call(kPlayer, "Play");
    EXPECT_EQ(Presses(), 3);

    for (const char* method : {"Pause", "Next", "Previous"}) panel.Call(kPlayer, method);
    panel.Call(kPlayer, "Seek", {QVariant(1'000'000LL)});
    panel.Call("org.freedesktop.DBus.Properties", "Set",
               {kPlayer, "Volume", QVariant::fromValue(QDBusVariant(0.2))});
    const QDBusMessage opened = panel.Call(kPlayer, "OpenUri", {"file:///tmp/a.mp3"});
    EXPECT_EQ(opened.errorName(), "org.freedesktop.DBus.Error.NotSupported");
    EXPECT_EQ(Presses(), 3);
    EXPECT_EQ(panel.Properties(kPlayer).value("Volume"), 1.0);

    panel.Call(kRoot, "Raise");
    panel.Call(kRoot, "Quit");
    EXPECT_TRUE(RunUntil([&] { return raises == 1 && quits == 1; }));
}

TEST_F(MprisTest, APressThatTakesItsTimeIsNotRepeated) {
    delayed = true;
    panel.Call(kPlayer, "Play");
    panel.Call(kPlayer, "Play");
    EXPECT_EQ(Presses(), 1);
    panel.Call(kPlayer, "Stop");
    panel.Call(kPlayer, "Stop");
    EXPECT_EQ(Presses(), 2) << "a second stop would be a start";
    now.onAir = true;
    mpris.Update(now);
    panel.Call(kPlayer, "Stop");
    EXPECT_EQ(Presses(), 2) << "the stop is still to come";
    now.onAir = false;
    mpris.Update(now);
    panel.Call(kPlayer, "Play");
    EXPECT_EQ(Presses(), 3);
}

TEST_F(MprisTest, ACallIsAnsweredBeforeItIsCarriedOut) {
    Mpris other({{},
                 [&] {
                     EXPECT_EQ(panel.Properties(kRoot).size(), 7) << "a caller waits";
                     ++raises;
                 },
                 {}});
    panel.service += ".instance" + QString::number(QCoreApplication::applicationPid());
    EXPECT_EQ(panel.Call(kRoot, "Raise").type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(RunUntil([&] { return raises == 1; }));
    panel.Call(kRoot, "Quit");
    panel.Call(kPlayer, "PlayPause");  // nothing is bound to these
    EXPECT_EQ(Presses(), 0);
}

TEST_F(MprisTest, AnnouncesExactlyWhatChanged) {
    const auto expect = [this](const char* change, std::vector<std::pair<QString, QStringList>> expected) {
        mpris.Update(now);
        panel.Properties(kRoot);
        std::vector<std::pair<QString, QStringList>> seen;
        for (const auto& [interface, values] : panel.Changes()) seen.emplace_back(interface, values.keys());
        EXPECT_EQ(seen, expected) << change;
    };
    expect("nothing", {});
    now.onAir = true;
    expect("on air", {{kPlayer, {"PlaybackStatus"}}});
    expect("nothing again", {});
    now.station = "Sorakaze";
    expect("the name it had", {});
    now.station = "Radio 空";
    expect("station", {{kRoot, {"Identity"}}});
    now.title = "not on yet";
    expect("a title without a track", {});
    now.number = 1;
    expect("track", {{kPlayer, {"Metadata"}}});
    now.album = "other";
    expect("album", {{kPlayer, {"Metadata"}}});
    now = {};
    expect("all", {{kRoot, {"Identity"}}, {kPlayer, {"Metadata", "PlaybackStatus"}}});
}

TEST_F(MprisTest, TheTrackGoesOutInTheTypesThatPanelsExpect) {
    now = {true, "", 12, "A \"quoted\" 曲", "Björk & Co", "", "/music/a b/ü#1?%.flac"};
    mpris.Update(now);
    const QVariantMap shown = Map(panel.Properties(kPlayer).value("Metadata"));
    EXPECT_EQ(shown.keys(), (QStringList{"mpris:trackid", "xesam:artist", "xesam:title", "xesam:url"}));
    EXPECT_EQ(shown.value("mpris:trackid").value<QDBusObjectPath>().path(), "/org/sorakaze/track/12");
    EXPECT_EQ(shown.value("xesam:title"), now.title);
    EXPECT_EQ(shown.value("xesam:artist"), QStringList{now.artist});
    EXPECT_EQ(shown.value("xesam:url"), "file:///music/a%20b/%C3%BC%231%3F%25.flac");
    const std::vector<Panel::Change> changes = panel.Changes();
    ASSERT_EQ(changes.size(), 1u);
    EXPECT_EQ(Map(changes[0].values.value("Metadata")), shown);

    // What no bus carries as text must not cost the connection.
    now.title = QString(QChar(0xd800)) + QChar(0) + QChar(0xffff) + "end";
    mpris.Update(now);
    EXPECT_EQ(Status(), "Playing");
}

TEST_F(MprisTest, ASecondStationHasANameOfItsOwnAndGivesItBack) {
    const QString taken = panel.service;
    const QString own = taken + ".instance" + QString::number(QCoreApplication::applicationPid());
    {
        const Mpris second({});
        QStringList players = panel.Players();
        players.sort();
        EXPECT_EQ(players, (QStringList{taken, own}));
    }
    EXPECT_TRUE(RunUntil([&] { return panel.Players() == QStringList{taken}; }));
}

TEST_F(MprisTest, ABusThatGoesAwayDoesNoHarm) {
    bus.Kill();
    now.onAir = true;
    mpris.Update(now);
    const QDBusConnection watched("panel");
    EXPECT_TRUE(RunUntil([&] { return !watched.isConnected(); }));
    now.number = 3;
    mpris.Update(now);
}

TEST(MprisAlone, NothingHappensWithoutABus) {
    static int messages = 0;
    const QtMessageHandler before =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) { ++messages; });
    const QTemporaryDir empty;
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(empty.path()));
    PrivateBus().Kill();
    const QByteArray dead = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    for (const QByteArray& address : {QByteArray(), dead, QByteArray("autolaunch:")}) {
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        Mpris mpris({});
        mpris.Update({true, "Radio", 1, "t", "a", "b", "/c"});
        QCoreApplication::processEvents();
    }
    PrivateBus::SetEnvironment();
    qputenv("XDG_RUNTIME_DIR", runtime);
    qInstallMessageHandler(before);
    EXPECT_EQ(messages, 0);
}

}  // namespace
}  // namespace sorakaze::desktop
