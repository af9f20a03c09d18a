// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/program/WebRules.h"

#include <algorithm>
#include <utility>

namespace sorakaze::viewer {
namespace {

constexpr const char* kWithin[] = {"data", "blob", "about"};  // nothing goes out for these

// What is not somewhere on the internet: this machine, its networks, groups, and what is reserved.
constexpr const char* kSpecial[] = {
    "0.0.0.0/8",      "10.0.0.0/8",   "100.64.0.0/10",  "127.0.0.0/8",    "169.254.0.0/16", "172.16.0.0/12",
    "192.0.0.0/24",   "192.0.2.0/24", "192.88.99.0/24", "192.168.0.0/16", "198.18.0.0/15",  "198.51.100.0/24",
    "203.0.113.0/24", "224.0.0.0/3",  "2001::/23",      "2001:db8::/32",  "2002::/16"};
constexpr const char* kInternet6 = "2000::/3";
constexpr const char* kLocalNames[] = {".localhost", ".local", ".localdomain", ".internal", ".home.arpa",
                                       ".lan",       ".home",  ".corp",        ".intranet"};

bool IsOfTheWeb(const QUrl& url) {
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
}

QString OriginOf(const QUrl& url) {
    const int usual = url.scheme() == QLatin1String("https") ? 443 : 80;
    return url.scheme() + "://" + url.host() + ':' + QString::number(url.port(usual));
}

bool IsPublic(QHostAddress address) {
    bool mapped = false;
    if (const quint32 v4 = address.toIPv4Address(&mapped); mapped) address = QHostAddress(v4);
    const auto within = [&](const char* net) {
        return address.isInSubnet(QHostAddress::parseSubnet(QLatin1String(net)));
    };
    if (address.protocol() == QAbstractSocket::IPv6Protocol && !within(kInternet6)) return false;
    return std::none_of(std::begin(kSpecial), std::end(kSpecial), within);
}

bool IsLocalName(QString host) {
    if (host.endsWith('.')) host.chop(1);
    return !host.contains('.') || std::any_of(std::begin(kLocalNames), std::end(kLocalNames), [&](auto end) {
        return host.endsWith(QLatin1String(end), Qt::CaseInsensitive);
    });
}

}  // namespace

WebRules::WebRules(QUrl formAddress, bool ownService, Resolve resolve)
    : form_(std::move(formAddress)), own_(ownService), resolve_(std::move(resolve)) {}

bool WebRules::Allows(const Request& request) {
    const QString scheme = request.url.scheme();
    const auto same = [&](const char* within) { return scheme == QLatin1String(within); };
    if (std::any_of(std::begin(kWithin), std::end(kWithin), same)) return true;
    if (!IsOfTheWeb(request.url)) return false;
    if (!IsOfTheWeb(request.initiator)) {
        if (!AllowsPage(request)) return false;
    } else {
        if (!answering_.contains(OriginOf(request.initiator))) return false;
        redirectsLeft_ = 0;  // the answer is here
        if (!MayAnswer(request.url)) return false;
    }
    if (request.subFrame) answering_.insert(OriginOf(request.url));
    return true;
}

/// A redirect of the form comes from the page as well.
bool WebRules::AllowsPage(const Request& request) {
    if (!request.subFrame) return false;
    if (posted_) return redirectsLeft_-- > 0 && MayAnswer(request.url);
    posted_ = request.method == "POST" && request.url == form_;
    return posted_;
}

bool WebRules::MayAnswer(const QUrl& url) {
    const bool sameOrigin = OriginOf(url) == OriginOf(form_);
    if (own_) {
        const QString folder = form_.path().left(form_.path().lastIndexOf('/') + 1);
        return sameOrigin && url.adjusted(QUrl::NormalizePathSegments).path().startsWith(folder);
    }
    return sameOrigin || IsPublic(url.host());
}

/// A name without addresses leads nowhere, or to a proxy that knows more.
bool WebRules::IsPublic(const QString& host) {
    const auto known = isPublic_.constFind(host);
    if (known != isPublic_.constEnd()) return *known;
    const QHostAddress literal(host);
    bool result = false;
    if (!literal.isNull()) {
        result = viewer::IsPublic(literal);
    } else if (!IsLocalName(host)) {
        const auto addresses = resolve_(host);
        result = std::all_of(addresses.begin(), addresses.end(), viewer::IsPublic);
    }
    return isPublic_[host] = result;
}

}  // namespace sorakaze::viewer
