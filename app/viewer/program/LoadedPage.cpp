// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/program/LoadedPage.h"

#include <QWebEngineDownloadRequest>
#include <QWebEngineFileSystemAccessRequest>
#include <QWebEngineFullScreenRequest>
#include <QWebEngineQuotaRequest>
#include <QWebEngineRegisterProtocolHandlerRequest>
#include <QWebEngineSettings>
#include <algorithm>
#include <initializer_list>
#include <utility>

namespace sorakaze::viewer {
namespace {

constexpr const char* kWebSchemes[] = {"http", "https", "ws", "wss", "data", "blob", "about"};

bool IsOfTheWeb(const QUrl& url) {
    return std::any_of(std::begin(kWebSchemes), std::end(kWebSchemes),
                       [scheme = url.scheme()](const char* web) { return scheme == QLatin1String(web); });
}

}  // namespace

void OnlyTheWeb::interceptRequest(QWebEngineUrlRequestInfo& request) {
    request.block(request.requestUrl() != page_ && !IsOfTheWeb(request.requestUrl()));
}

void ConfigureProfile(QWebEngineProfile& profile) {
    profile.setHttpCacheType(QWebEngineProfile::NoCache);
    profile.setPersistentCookiesPolicy(QWebEngineProfile::NoPersistentCookies);
    profile.setSpellCheckEnabled(false);
    QObject::connect(&profile, &QWebEngineProfile::downloadRequested,
                     [](QWebEngineDownloadRequest* download) { download->cancel(); });
}

LoadedPage::LoadedPage(const QUrl& page, QWebEngineProfile& profile) : QWebEnginePage(&profile), page_(page) {
    Configure();
    RefuseWhatIsAsked();
    load(page_);
    // A page that thinks itself hidden may hold its breath. Said before the load it would be lost.
    setVisible(true);
}

void LoadedPage::Configure() {
    using Settings = QWebEngineSettings;
    settings()->setUnknownUrlSchemePolicy(Settings::DisallowUnknownUrlSchemes);
    for (const auto& [attribute, on] : std::initializer_list<std::pair<Settings::WebAttribute, bool>>{
             {Settings::LocalContentCanAccessRemoteUrls, true},  // its form is posted to a service
             {Settings::LocalContentCanAccessFileUrls, false},
             // Reads false before anything has been set, and isn't.
             {Settings::PlaybackRequiresUserGesture, false},
             {Settings::JavascriptCanOpenWindows, false},
             {Settings::JavascriptCanAccessClipboard, false},
             {Settings::AllowWindowActivationFromJavaScript, false},
             {Settings::FocusOnNavigationEnabled, false},
             {Settings::ErrorPageEnabled, false},
             {Settings::PluginsEnabled, false},
             {Settings::PdfViewerEnabled, false},
             {Settings::ScreenCaptureEnabled, false},
             {Settings::FullScreenSupportEnabled, false},
             {Settings::WebGLEnabled, false},
             {Settings::WebRTCPublicInterfacesOnly, true},
             {Settings::AutoLoadIconsForPage, false},
             {Settings::DnsPrefetchEnabled, false},
             {Settings::HyperlinkAuditingEnabled, false},
         }) {
        settings()->setAttribute(attribute, on);
    }
}

void LoadedPage::RefuseWhatIsAsked() {
    connect(this, &QWebEnginePage::featurePermissionRequested, this,
            [this](const QUrl& origin, Feature feature) {
                setFeaturePermission(origin, feature, PermissionDeniedByUser);
            });
    const auto refuse = [](auto request) { request.reject(); };
    connect(this, &QWebEnginePage::quotaRequested, this, refuse);
    connect(this, &QWebEnginePage::registerProtocolHandlerRequested, this, refuse);
    connect(this, &QWebEnginePage::fileSystemAccessRequested, this, refuse);
    connect(this, &QWebEnginePage::fullScreenRequested, this, refuse);
}

bool LoadedPage::acceptNavigationRequest(const QUrl& url, NavigationType, bool isMainFrame) {
    return isMainFrame ? url == page_ : IsOfTheWeb(url);
}

}  // namespace sorakaze::viewer
