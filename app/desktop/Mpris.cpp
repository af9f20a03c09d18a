// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desktop/Mpris.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <atomic>
#include <utility>

#include "app/desktop/MprisAdaptors.h"
#include "app/desktop/SessionBus.h"

namespace sorakaze::desktop {
namespace {

constexpr char kObject[] = "/org/mpris/MediaPlayer2";
constexpr char kRoot[] = "org.mpris.MediaPlayer2";
constexpr char kPlayer[] = "org.mpris.MediaPlayer2.Player";
constexpr char kService[] = "org.mpris.MediaPlayer2.sorakaze";

/// A connection of our own, so that ending it ends nobody else's.
QString ConnectionName() {
    static std::atomic<int> count = 0;
    return QStringLiteral("sorakaze-mpris-%1").arg(++count);
}

QDBusConnection Connect(const QString& name) {
    // A name without a connection gives a valid object that is not connected.
    return HasSessionBus() ? QDBusConnection::connectToBus(QDBusConnection::SessionBus, name)
                           : QDBusConnection(name);
}

}  // namespace

struct Mpris::Impl {
    explicit Impl(Commands commands)
        : state{ConnectionName(), std::move(commands), {}, {}}, connection(Connect(state.connection)) {
        new MprisRoot(&object, state);
        new MprisPlayer(&object, state);
        if (!connection.isConnected()) return;
        // The object first: whoever sees the name may call it.
        connection.registerObject(kObject, &object, QDBusConnection::ExportAdaptors);
        if (connection.registerService(kService)) return;
        const QString pid = QString::number(QCoreApplication::applicationPid());
        connection.registerService(QString::fromLatin1(kService) + ".instance" + pid);
    }

    ~Impl() {
        connection.unregisterObject(kObject);
        // The bus takes the name back with the connection.
        QDBusConnection::disconnectFromBus(state.connection);
    }

    void Announce(const char* interface, const QVariantMap& changed) {
        if (changed.isEmpty() || !connection.isConnected()) return;
        QDBusMessage signal =
            QDBusMessage::createSignal(kObject, "org.freedesktop.DBus.Properties", "PropertiesChanged");
        signal << QString::fromLatin1(interface) << changed << QStringList();
        connection.send(signal);
    }

    MprisState state;
    QDBusConnection connection;
    QObject object;  ///< last: destroyed before what its adaptors read
};

Mpris::Mpris(Commands commands) : impl_(std::make_unique<Impl>(std::move(commands))) {}

Mpris::~Mpris() = default;

void Mpris::Update(const NowPlaying& now) {
    const NowPlaying before = std::exchange(impl_->state.now, now);
    if (before.onAir != now.onAir && impl_->state.pending == now.onAir) impl_->state.pending.reset();
    QVariantMap root;
    if (IdentityOf(before) != IdentityOf(now)) root.insert("Identity", IdentityOf(now));
    QVariantMap player;
    if (before.onAir != now.onAir) player.insert("PlaybackStatus", PlaybackStatusOf(now));
    if (MetadataOf(before) != MetadataOf(now)) player.insert("Metadata", MetadataOf(now));
    impl_->Announce(kRoot, root);
    impl_->Announce(kPlayer, player);
}

}  // namespace sorakaze::desktop
