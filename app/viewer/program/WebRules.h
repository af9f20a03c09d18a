// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QList>
#include <QSet>
#include <QUrl>
#include <functional>

namespace sorakaze::viewer {

/// Which requests go out: the page's form to the voice service, once, to wherever that redirects, and what
/// the answer asks for. For the own service's answer only what is beside the form. Nothing else on this
/// machine or in its local network is reached, unless the service is there itself. One thread.
class WebRules {
  public:
    struct Request {
        QUrl url;
        QUrl initiator;  ///< the origin that asks; nothing of the web for the page itself
        QByteArray method;
        bool subFrame = false;
    };
    /// The addresses of a host; may block.
    using Resolve = std::function<QList<QHostAddress>(const QString& host)>;

    WebRules(QUrl formAddress, bool ownService, Resolve resolve);
    bool Allows(const Request& request);

  private:
    bool AllowsPage(const Request& request);
    bool MayAnswer(const QUrl& url);
    bool IsPublic(const QString& host);

    const QUrl form_;
    const bool own_;
    const Resolve resolve_;
    bool posted_ = false;
    int redirectsLeft_ = 5;
    QSet<QString> answering_;        ///< origins of frames that belong to the answer
    QHash<QString, bool> isPublic_;  ///< known hosts, so that each is resolved once
};

}  // namespace sorakaze::viewer
