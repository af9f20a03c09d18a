// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QObject>
#include <QWidget>

#include "app/runtime/Runtime.h"

namespace sorakaze::window {

/// Messages as boxes. One that a show thread asks for stops that thread alone: the window goes on working.
/// One of the main thread is modal. Lives on the main thread.
class QtHost : public QObject, public Host {
  public:
    void ShowMessage(const String& text, std::stop_token cancelled) override;

    /// The window that boxes belong to. Until it is set they stand by themselves.
    void SetParent(QWidget* parent) { parent_ = parent; }
    /// Nobody answers any more: boxes close, and messages return at once from here on. Main thread.
    void Close();

  private:
    void ShowModal(const QString& text);

    QWidget* parent_ = nullptr;
    QDialog* modal_ = nullptr;  ///< the box that the main thread stands in
    std::stop_source closing_;
};

}  // namespace sorakaze::window
