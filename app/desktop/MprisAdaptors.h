// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The two interfaces of a media player on the bus: the application and its player. Both read the same state.
// Commands run after the answer was sent, so that a caller never waits for a show or a message box.
#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QStringList>
#include <QVariantMap>
#include <optional>

#include "app/desktop/Mpris.h"

namespace sorakaze::desktop {

/// What both interfaces show and command. Main thread only.
struct MprisState {
    QString connection;  ///< the name of the bus connection
    Commands commands;
    NowPlaying now;
    /// Whether the show will be on the air after the presses that have no effect yet: the show may take time,
    /// or wait for a message box.
    std::optional<bool> pending = std::nullopt;

    bool WillBeOnAir() const { return pending.value_or(now.onAir); }
};

QString IdentityOf(const NowPlaying& now);
QString PlaybackStatusOf(const NowPlaying& now);
/// Empty while no track runs; fields without a value are left out.
QVariantMap MetadataOf(const NowPlaying& now);

/// Slots, signals and properties are those of the interface, under its names.
class MprisRoot : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2")
    Q_PROPERTY(bool CanQuit READ Always)
    Q_PROPERTY(bool CanRaise READ Always)
    Q_PROPERTY(bool HasTrackList READ Never)
    Q_PROPERTY(QString Identity READ Identity)
    Q_PROPERTY(QString DesktopEntry READ DesktopEntry)
    Q_PROPERTY(QStringList SupportedUriSchemes READ None)
    Q_PROPERTY(QStringList SupportedMimeTypes READ None)

  public:
    /// `state` outlives `object`, which owns this.
    MprisRoot(QObject* object, MprisState& state) : QDBusAbstractAdaptor(object), state_(state) {}

    bool Always() const { return true; }
    bool Never() const { return false; }
    QString Identity() const { return IdentityOf(state_.now); }
    QString DesktopEntry() const { return QStringLiteral("sorakaze"); }
    QStringList None() const { return {}; }

  public slots:
    void Raise();
    void Quit();

  private:
    MprisState& state_;
};

/// A station is on the air or not: there is no pausing, skipping or seeking.
class MprisPlayer : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ PlaybackStatus)
    Q_PROPERTY(QVariantMap Metadata READ Metadata)
    Q_PROPERTY(double Rate READ One WRITE Keep)
    Q_PROPERTY(double MinimumRate READ One)
    Q_PROPERTY(double MaximumRate READ One)
    Q_PROPERTY(double Volume READ One WRITE Keep)
    Q_PROPERTY(qlonglong Position READ Position)
    Q_PROPERTY(bool CanControl READ Always)
    Q_PROPERTY(bool CanPlay READ Always)
    Q_PROPERTY(bool CanPause READ Never)
    Q_PROPERTY(bool CanSeek READ Never)
    Q_PROPERTY(bool CanGoNext READ Never)
    Q_PROPERTY(bool CanGoPrevious READ Never)

  public:
    /// `state` outlives `object`, which owns this.
    MprisPlayer(QObject* object, MprisState& state) : QDBusAbstractAdaptor(object), state_(state) {}

    QString PlaybackStatus() const { return PlaybackStatusOf(state_.now); }
    QVariantMap Metadata() const { return MetadataOf(state_.now); }
    double One() const { return 1.0; }
    void Keep(double) {}
    qlonglong Position() const { return 0; }
    bool Always() const { return true; }
    bool Never() const { return false; }

  public slots:
    void PlayPause();
    void Play();
    void Stop();
    void Pause() {}
    void Next() {}
    void Previous() {}
    void Seek(qlonglong) {}
    void SetPosition(const QDBusObjectPath&, qlonglong) {}
    /// Answered with an error: nobody else chooses what is played.
    void OpenUri(const QString& uri, const QDBusMessage& call);

  signals:
    void Seeked(qlonglong position);

  private:
    enum class PressIf { Always, OnAir, OffAir };
    void Press(PressIf when);

    MprisState& state_;
};

}  // namespace sorakaze::desktop
