// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineUrlRequestInterceptor>
#include <QWebEngineUrlSchemeHandler>
#include <functional>

#include "app/viewer/Page.h"
#include "app/viewer/program/Audibility.h"
#include "app/viewer/program/WebRules.h"

namespace sorakaze::viewer {

/// Makes the page's own scheme known. Called before the application is made.
void RegisterPageScheme();

/// Checks all requests of a page against the rules.
class RequestFilter : public QWebEngineUrlRequestInterceptor {
  public:
    explicit RequestFilter(const Service& service);
    void interceptRequest(QWebEngineUrlRequestInfo& request) override;

  private:
    WebRules rules_;
};

/// Serves the page, with the one script that it may run, from memory.
class PageSchemeHandler : public QWebEngineUrlSchemeHandler {
  public:
    explicit PageSchemeHandler(const Page& page);
    void requestStarted(QWebEngineUrlRequestJob* job) override;

  private:
    const QByteArray bytes_;
};

/// A page that runs and plays without a window or a user. It can't open other pages, and all its dialogs are
/// answered with no at once.
class LoadedPage : public QWebEnginePage {
  public:
    /// Loads what the profile's PageSchemeHandler serves. The profile outlives the page. `tellAudible` is
    /// called when the page begins to be heard, and when it isn't any more.
    LoadedPage(QWebEngineProfile& profile, std::function<void(bool)> tellAudible);

  protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) override;
    QWebEnginePage* createWindow(WebWindowType) override { return nullptr; }
    QStringList chooseFiles(FileSelectionMode, const QStringList&, const QStringList&) override { return {}; }
    void javaScriptAlert(const QUrl&, const QString&) override {}
    bool javaScriptConfirm(const QUrl&, const QString&) override { return false; }
    bool javaScriptPrompt(const QUrl&, const QString&, const QString&, QString*) override { return false; }
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString& message, int,
                                  const QString&) override {
        audibility_.OnConsole(message);
    }

  private:
    void Configure();
    void RefuseWhatIsAsked();
    void Listen();

    Audibility audibility_;
};

/// Makes the profile keep nothing on disk.
/// `filter` and `source` outlive it.
void ConfigureProfile(QWebEngineProfile& profile, RequestFilter& filter, PageSchemeHandler& source);

}  // namespace sorakaze::viewer
