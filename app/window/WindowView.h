// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The window on the screen: a Qt widget for each of the logic's controls. What the user does is posted to the
// logic's event loop, never done at once; what the logic changes is shown at once or, from another thread,
// soon. Used on the main thread.
#pragma once

#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSlider>
#include <QWidget>
#include <functional>

#include "app/runtime/Runtime.h"
#include "app/window/MenuBox.h"
#include "show/mainWindow.h"

namespace sorakaze::window {

class WindowView : public QWidget {
  public:
    /// Both outlive the view.
    WindowView(mainWindow& window, Runtime& runtime);
    ~WindowView() override;

    /// Called when the user has closed the window.
    std::function<void()> onClose;

    /// Brings the window to the front.
    void Raise();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void ApplyWindowProperties();
    void PlaceControls();
    void BindMenu(PopupMenu& menu, MenuBox& box, const char* name);
    void BindButton();
    void BindSlider();
    void BindText(TextControl& text, std::function<void(const QString&)> show);
    void OrderTabs();
    /// Runs `show` on the main thread. Called with the baton.
    void OnMainThread(std::function<void()> show);

    mainWindow& window_;
    Runtime& runtime_;
    QPlainTextEdit resultField_{this};
    MenuBox playlistMenu_{this};
    MenuBox programMenu_{this};
    QPushButton programStart_{this};
    QLabel staticText1_{this};
    QLabel staticText2_{this};
    QLabel staticText3_{this};
    QSlider songDurationSlider_{Qt::Horizontal, this};
    QLabel songDuration_{this};
};

QString ToQt(const String& text);

}  // namespace sorakaze::window
