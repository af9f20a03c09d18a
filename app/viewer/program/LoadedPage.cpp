// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/program/LoadedPage.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QHostInfo>
#include <QWebEngineDownloadRequest>
#include <QWebEngineFileSystemAccessRequest>
#include <QWebEngineFullScreenRequest>
#include <QWebEngineQuotaRequest>
#include <QWebEngineRegisterProtocolHandlerRequest>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineSettings>
#include <QWebEngineUrlRequestJob>
#include <QWebEngineUrlScheme>
#include <initializer_list>
#include <utility>

namespace sorakaze::viewer {
namespace {

constexpr const char* kScheme = "page";

QUrl PageUrl() {
    return QUrl("page:voice");
}

/// The page's own frames may lead anywhere that the filter lets them.
QByteArray Policy(const std::string& script) {
    const QByteArray hash =
        QCryptographicHash::hash(QByteArray::fromStdString(script), QCryptographicHash::Sha256).toBase64();
    return "default-src 'none'; base-uri 'none'; frame-src http: https:; script-src 'unsafe-hashes' "
           "'sha256-" +
           hash + "'";
}

QList<QHostAddress> Resolve(const QString& host) {
    return QHostInfo::fromName(host).addresses();
}

}  // namespace

/// Without a host its origin is like no other, as that of a local file is.
void RegisterPageScheme() {
    QWebEngineUrlScheme scheme(kScheme);
    scheme.setSyntax(QWebEngineUrlScheme::Syntax::Path);
    QWebEngineUrlScheme::registerScheme(scheme);
}

RequestFilter::RequestFilter(const Service& service)
    : rules_(QUrl(QString::fromStdString(service.address)), service.own, Resolve) {}

void RequestFilter::interceptRequest(QWebEngineUrlRequestInfo& request) {
    const bool subFrame = request.resourceType() == QWebEngineUrlRequestInfo::ResourceTypeSubFrame;
    const bool isPage = request.resourceType() == QWebEngineUrlRequestInfo::ResourceTypeMainFrame &&
                        request.requestUrl() == PageUrl();
    request.block(!isPage && !rules_.Allows({request.requestUrl(), request.initiator(),
                                             request.requestMethod(), subFrame}));
}

PageSchemeHandler::PageSchemeHandler(const Page& page)
    : bytes_("<meta http-equiv=\"Content-Security-Policy\" content=\"" + Policy(page.service.script) + "\">" +
             QByteArray::fromStdString(page.html)) {}

void PageSchemeHandler::requestStarted(QWebEngineUrlRequestJob* job) {
    if (job->requestUrl() != PageUrl()) return job->fail(QWebEngineUrlRequestJob::UrlNotFound);
    auto* const buffer = new QBuffer(job);
    buffer->setData(bytes_);
    job->reply("text/html; charset=utf-8", buffer);
}

void ConfigureProfile(QWebEngineProfile& profile, RequestFilter& filter, PageSchemeHandler& source) {
    profile.setHttpCacheType(QWebEngineProfile::NoCache);
    profile.setPersistentCookiesPolicy(QWebEngineProfile::NoPersistentCookies);
    profile.setSpellCheckEnabled(false);
    profile.setUrlRequestInterceptor(&filter);
    profile.installUrlSchemeHandler(kScheme, &source);
    QObject::connect(&profile, &QWebEngineProfile::downloadRequested,
                     [](QWebEngineDownloadRequest* download) { download->cancel(); });
}

LoadedPage::LoadedPage(QWebEngineProfile& profile, std::function<void(bool)> tellAudible)
    : QWebEnginePage(&profile), audibility_(std::move(tellAudible)) {
    Configure();
    RefuseWhatIsAsked();
    Listen();
    load(PageUrl());
    // A hidden page may pause. Set before the load, this would have no effect.
    setVisible(true);
}

void LoadedPage::Configure() {
    using Settings = QWebEngineSettings;
    settings()->setUnknownUrlSchemePolicy(Settings::DisallowUnknownUrlSchemes);
    for (const auto& [attribute, on] : std::initializer_list<std::pair<Settings::WebAttribute, bool>>{
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

void LoadedPage::Listen() {
    connect(this, &QWebEnginePage::recentlyAudibleChanged, this,
            [this](bool audible) { audibility_.OnEngine(audible); });
    connect(this, &QWebEnginePage::renderProcessTerminated, this, [this] { audibility_.OnRendererEnd(); });
    QWebEngineScript script;
    script.setSourceCode(audibility_.Script());
    script.setInjectionPoint(QWebEngineScript::DocumentCreation);
    script.setWorldId(QWebEngineScript::ApplicationWorld);
    script.setRunsOnSubFrames(true);
    scripts().insert(script);
}

bool LoadedPage::acceptNavigationRequest(const QUrl& url, NavigationType, bool isMainFrame) {
    return !isMainFrame || url == PageUrl();
}

}  // namespace sorakaze::viewer
