// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QObject>
#include <QWidget>

#include "app/runtime/Runtime.h"
#include "app/window/LeftMessages.h"

namespace sorakaze::window {

/// Messages as boxes. One that a show thread asks for stops that thread alone: the window goes on working.
/// One of the main thread is modal. Used on the main thread, but for ShowMessage and LeaveMessage.
class QtHost : public QObject, public Host {
  public:
    void ShowMessage(const Message& message, std::stop_token cancelled) override;
    std::function<bool()> LeaveMessage(const Message& message) override;

    /// The window that boxes belong to. Without one they are windows of their own.
    void SetParent(QWidget* parent);
    /// Closes the boxes; messages return at once from now on. Main thread.
    void Close();

  private:
    void ShowModal(const Message& message);

    QWidget* parent_ = nullptr;
    QDialog* modal_ = nullptr;  ///< the box that the main thread waits for
    LeftMessages left_;
    std::stop_source closing_;
};

}  // namespace sorakaze::window
