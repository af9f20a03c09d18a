// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/window/QtHost.h"

#include <QMessageBox>
#include <QPointer>
#include <QThread>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

#include "app/window/WindowView.h"

namespace sorakaze::window {
namespace {

/// A question that a thread waits on while the main thread shows it.
struct Question {
    std::mutex mutex;
    std::condition_variable changed;
    bool answered = false;  // guarded by mutex

    void Answer() {
        {
            const std::lock_guard lock(mutex);
            answered = true;
        }
        changed.notify_all();
    }
    bool IsAnswered() {
        const std::lock_guard lock(mutex);
        return answered;
    }
};

}  // namespace

void QtHost::ShowMessage(const Message& message, std::stop_token cancelled) {
    if (closing_.stop_requested()) return;
    if (QThread::currentThread() == thread()) {
        ShowModal(message);
        return;
    }
    const auto question = std::make_shared<Question>();
    QMetaObject::invokeMethod(
        this,
        [this, question, message, cancelled] {
            if (cancelled.stop_requested()) {
                question->Answer();
                return;
            }
            QMessageBox* box = MakeMessageBox(message, parent_);
            box->setModal(false);
            connect(box, &QObject::destroyed, this, [question] { question->Answer(); });
            // The thread may be killed before anybody answers.
            auto* closer = new QObject(box);
            const auto closeBox = [guard = QPointer<QObject>(closer), box] {
                if (guard)
                    QMetaObject::invokeMethod(
                        guard, [box] { box->close(); }, Qt::QueuedConnection);
            };
            auto stop = std::make_shared<std::stop_callback<std::function<void()>>>(cancelled, closeBox);
            connect(box, &QObject::destroyed, this, [stop] {});
            box->show();
        },
        Qt::QueuedConnection);
    const std::stop_callback wakeForKill(cancelled, [&question] { question->Answer(); });
    const std::stop_callback wakeForEnd(closing_.get_token(), [&question] { question->Answer(); });
    std::unique_lock lock(question->mutex);
    question->changed.wait(lock, [&question] { return question->answered; });
}

std::function<bool()> QtHost::LeaveMessage(const Message& message) {
    const auto question = std::make_shared<Question>();
    QMetaObject::invokeMethod(
        this,
        [this, question, message] {
            if (!closing_.stop_requested()) left_.Show(message, [question] { question->Answer(); });
        },
        Qt::QueuedConnection);
    return [question] { return question->IsAnswered(); };
}

void QtHost::ShowModal(const Message& message) {
    const QPointer<QMessageBox> box(MakeMessageBox(message, parent_));
    QDialog* const outer = std::exchange(modal_, box);
    box->exec();
    modal_ = outer;
}

void QtHost::SetParent(QWidget* parent) {
    parent_ = parent;
    left_.SetWindow(parent);
}

void QtHost::Close() {
    Q_ASSERT(QThread::currentThread() == thread());
    closing_.request_stop();
    if (modal_) modal_->reject();
    left_.Close();
}

}  // namespace sorakaze::window
