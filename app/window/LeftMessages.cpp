// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/window/LeftMessages.h"

#include <QDialogButtonBox>
#include <QPlainTextEdit>
#include <QTime>
#include <QVBoxLayout>
#include <utility>

#include "app/window/WindowView.h"

namespace sorakaze::window {
namespace {

/// Of a night full of messages the last ones are kept.
constexpr qsizetype kMostKept = 200;

/// As rich text, so that nothing in it is taken for markup.
QString Escaped(const QString& text) {
    return "<qt>" + text.toHtmlEscaped().replace('\n', "<br>") + "</qt>";
}

}  // namespace

QMessageBox* MakeMessageBox(const Message& message, QWidget* parent) {
    auto* box =
        new QMessageBox(QMessageBox::Information, "Sorakaze", ToQt(message.text), QMessageBox::Ok, parent);
    box->setTextFormat(Qt::PlainText);
    if (!message.details.IsEmpty()) box->setInformativeText(Escaped(ToQt(message.details)));
    box->setObjectName("message");
    box->setAttribute(Qt::WA_DeleteOnClose);
    return box;
}

LeftMessages::LeftMessages() {
    action_.setObjectName("leftMessages");
    connect(&action_, &QAction::triggered, this, [this] { List(); });
}

void LeftMessages::SetWindow(QWidget* window) {
    window_ = window;
    if (!window) return;
    window->addAction(&action_);
    window->setContextMenuPolicy(Qt::ActionsContextMenu);
    Refresh();
}

void LeftMessages::Show(const Message& message, std::function<void()> answered) {
    Close();
    Keep(message);
    box_ = MakeMessageBox(message, window_);
    box_->setModal(false);
    box_->setAttribute(Qt::WA_ShowWithoutActivating);
    if (texts_.size() > 1) {
        box_->setInformativeText(
            box_->informativeText() + "<p>" +
            QString("%1 earlier: see the window's context menu.").arg(texts_.size() - 1) + "</p>");
    }
    connect(box_, &QDialog::finished, this, [this, text = texts_.back(), answered = std::move(answered)] {
        texts_.removeOne(text);
        Refresh();
        answered();
    });
    box_->show();
}

void LeftMessages::Close() {
    if (!box_) return;
    box_->disconnect(this);
    box_->close();
}

void LeftMessages::Keep(const Message& message) {
    QString text = QTime::currentTime().toString("HH:mm:ss") + "  " + ToQt(message.text);
    if (!message.details.IsEmpty()) text += "\n" + ToQt(message.details);
    texts_.append(std::move(text));
    if (texts_.size() > kMostKept) texts_.removeFirst();
    Refresh();
}

void LeftMessages::Refresh() {
    action_.setText(QString("メッセージ (%1)…").arg(texts_.size()));
    action_.setEnabled(!texts_.isEmpty());
    if (window_) window_->setToolTip(texts_.isEmpty() ? QString() : Escaped(texts_.back()));
}

void LeftMessages::List() {
    auto* dialog = new QDialog(window_);
    dialog->setObjectName("leftMessages");
    dialog->setWindowTitle("Sorakaze");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    auto* text = new QPlainTextEdit(texts_.join("\n\n"), dialog);
    text->setReadOnly(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, dialog);
    connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    auto* layout = new QVBoxLayout(dialog);
    layout->addWidget(text);
    layout->addWidget(buttons);
    // They have been read.
    texts_.clear();
    Close();
    Refresh();
    dialog->resize(560, 320);
    dialog->show();
}

}  // namespace sorakaze::window
