// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desktop/MprisAdaptors.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QMetaObject>
#include <QUrl>

namespace sorakaze::desktop {
namespace {

/// Runs `command` from the event loop, unless the object is destroyed before.
void PostTo(QObject* object, std::function<void()> command) {
    if (command) QMetaObject::invokeMethod(object, std::move(command), Qt::QueuedConnection);
}

}  // namespace

QString IdentityOf(const NowPlaying& now) {
    return now.station.isEmpty() ? QStringLiteral("Sorakaze") : now.station;
}

QString PlaybackStatusOf(const NowPlaying& now) {
    return now.onAir ? QStringLiteral("Playing") : QStringLiteral("Stopped");
}

QVariantMap MetadataOf(const NowPlaying& now) {
    QVariantMap fields;
    if (now.number <= 0) return fields;
    const QDBusObjectPath track(QStringLiteral("/org/sorakaze/track/%1").arg(now.number));
    fields.insert(QStringLiteral("mpris:trackid"), QVariant::fromValue(track));
    if (!now.title.isEmpty()) fields.insert(QStringLiteral("xesam:title"), now.title);
    if (!now.artist.isEmpty()) fields.insert(QStringLiteral("xesam:artist"), QStringList{now.artist});
    if (!now.album.isEmpty()) fields.insert(QStringLiteral("xesam:album"), now.album);
    if (!now.path.isEmpty()) {
        const QByteArray url = QUrl::fromLocalFile(now.path).toEncoded();
        fields.insert(QStringLiteral("xesam:url"), QString::fromLatin1(url));
    }
    return fields;
}

void MprisRoot::Raise() {
    PostTo(parent(), state_.commands.raise);
}

void MprisRoot::Quit() {
    PostTo(parent(), state_.commands.quit);
}

void MprisPlayer::PlayPause() {
    Press(PressIf::Always);
}

void MprisPlayer::Play() {
    Press(PressIf::OffAir);
}

void MprisPlayer::Stop() {
    Press(PressIf::OnAir);
}

void MprisPlayer::Press(PressIf when) {
    // Pending presses count: a repeated Play starts one show, and a repeated Stop never starts one.
    PostTo(parent(), [this, when] {
        const bool onAir = state_.WillBeOnAir();
        if ((when == PressIf::OnAir && !onAir) || (when == PressIf::OffAir && onAir)) return;
        state_.pending = !onAir;
        if (state_.commands.press) state_.commands.press();
    });
}

void MprisPlayer::OpenUri(const QString& uri, const QDBusMessage& call) {
    call.setDelayedReply(true);
    const QString text = QStringLiteral("a radio station opens nothing on request: %1").arg(uri);
    QDBusConnection(state_.connection).send(call.createErrorReply(QDBusError::NotSupported, text));
}

}  // namespace sorakaze::desktop
