// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QComboBox>

namespace sorakaze::window {

/// A popup menu of a fixed width. A selected text that is too long for it ends in an ellipsis, and the whole
/// text is its tooltip.
class MenuBox : public QComboBox {
  public:
    using QComboBox::QComboBox;

    /// The selected text as it is drawn.
    QString ShownText() const;

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;
};

}  // namespace sorakaze::window
