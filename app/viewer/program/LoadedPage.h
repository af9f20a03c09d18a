// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QUrl>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineUrlRequestInterceptor>

namespace sorakaze::viewer {

/// Lets a page ask the web for what it wants, and nobody else: of the local files, itself alone.
class OnlyTheWeb : public QWebEngineUrlRequestInterceptor {
  public:
    explicit OnlyTheWeb(QUrl page) : page_(std::move(page)) {}
    void interceptRequest(QWebEngineUrlRequestInfo& request) override;

  private:
    const QUrl page_;
};

/// A page of a local file that runs, and plays, without being seen and without anybody at hand. It can't
/// open anything beside itself: what it asks of a user is answered with no, and at once.
class LoadedPage : public QWebEnginePage {
  public:
    /// The profile outlives the page.
    LoadedPage(const QUrl& page, QWebEngineProfile& profile);

  protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) override;
    QWebEnginePage* createWindow(WebWindowType) override { return nullptr; }
    QStringList chooseFiles(FileSelectionMode, const QStringList&, const QStringList&) override { return {}; }
    void javaScriptAlert(const QUrl&, const QString&) override {}
    bool javaScriptConfirm(const QUrl&, const QString&) override { return false; }
    bool javaScriptPrompt(const QUrl&, const QString&, const QString&, QString*) override { return false; }
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString&, int,
                                  const QString&) override {}

  private:
    void Configure();
    void RefuseWhatIsAsked();

    const QUrl page_;
};

/// Keeps nothing: neither on the disk nor, since it goes with the page, in memory.
void ConfigureProfile(QWebEngineProfile& profile);

}  // namespace sorakaze::viewer
