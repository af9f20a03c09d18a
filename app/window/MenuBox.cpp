// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/window/MenuBox.h"

#include <QHelpEvent>
#include <QStylePainter>
#include <QToolTip>

namespace sorakaze::window {
namespace {

/// Pixels that styles leave free beside the text, on both sides together.
constexpr int kMargins = 4;

}  // namespace

QString MenuBox::ShownText() const {
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect field =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    return fontMetrics().elidedText(currentText(), Qt::ElideRight, field.width() - kMargins);
}

void MenuBox::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    painter.setPen(palette().color(QPalette::Text));
    QStyleOptionComboBox option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    option.currentText = ShownText();
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

bool MenuBox::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip || ShownText() == currentText()) return QComboBox::event(event);
    // As rich text with everything escaped: a tooltip that looks like markup would be taken for it.
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(),
                       "<qt>" + currentText().toHtmlEscaped() + "</qt>", this);
    return true;
}

}  // namespace sorakaze::window
