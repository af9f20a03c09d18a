// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The messages that the show has gone on without an answer to. The newest stays on the screen as a box; all
// of them are behind the window's context menu, and the newest is its tooltip, until somebody has read them.
// Main thread.
#pragma once

#include <QAction>
#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QWidget>
#include <functional>

#include "app/runtime/Runtime.h"

namespace sorakaze::window {

/// A box with the message and its details, that deletes itself when it is closed.
QMessageBox* MakeMessageBox(const Message& message, QWidget* parent);

class LeftMessages : public QObject {
  public:
    LeftMessages();

    /// The window that boxes belong to, and whose menu lists them. Outlives this object, or is null.
    void SetWindow(QWidget* window);
    /// Shows the message in place of the one before. `answered` is called when the user has closed the box.
    void Show(const Message& message, std::function<void()> answered);
    /// Takes the box away.
    void Close();

    /// Each with the time of day, the oldest first.
    const QStringList& Texts() const { return texts_; }

  private:
    void Keep(const Message& message);
    void List();
    void Refresh();

    QPointer<QWidget> window_;
    QPointer<QMessageBox> box_;
    QStringList texts_;
    QAction action_;
};

}  // namespace sorakaze::window
