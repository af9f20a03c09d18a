// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/Viewer.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <QFile>
#include <csignal>
#include <cstdio>
#include <utility>

namespace sorakaze::viewer {
namespace {

/// An empty page, then the one that is meant: the first of the two need not be started.
constexpr int kHesitationMilliseconds = 5;

/// For a process that the kernel has to take down.
constexpr int kPatienceMilliseconds = 1000;

/// Between the fork and the program: a process group of its own, which ends as one and which a terminal's
/// Ctrl+C does not reach; no outliving the application, however that ends; and no signals held back.
void BecomeOnesOwn() {
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

QString FromPath(const std::filesystem::path& path) {
    return QFile::decodeName(path.c_str());
}

QString LastLine(const QByteArray& text) {
    return QString::fromLocal8Bit(text.trimmed().split('\n').last().left(300));
}

}  // namespace

Viewer::Viewer(std::filesystem::path program) : program_(std::move(program)) {
    hesitation_.setSingleShot(true);
    hesitation_.setTimerType(Qt::PreciseTimer);
    hesitation_.setInterval(kHesitationMilliseconds);
    connect(&hesitation_, &QTimer::timeout, this, [this] { Begin(); });
}

Viewer::~Viewer() {
    const auto processes = findChildren<QProcess*>();
    for (QProcess* process : processes) End(*process);
    for (QProcess* process : processes) process->waitForFinished(kPatienceMilliseconds);
}

void Viewer::Load(std::filesystem::path page) {
    {
        const std::lock_guard lock(mutex_);
        next_ = std::move(page);
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (process_) End(*std::exchange(process_, nullptr));
            hesitation_.start();
        },
        Qt::QueuedConnection);
}

void Viewer::Begin() {
    std::filesystem::path page;
    {
        const std::lock_guard lock(mutex_);
        page = next_;
    }
    process_ = new QProcess(this);
    QProcess* const process = process_;
    connect(process, &QProcess::finished, process, &QObject::deleteLater);
    connect(process, &QProcess::finished, this, [this, process] {
        Complain(LastLine(process->readAllStandardError()));
        process_ = nullptr;
    });
    connect(process, &QProcess::errorOccurred, this, [this, process](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart) return;
        Complain(process->errorString());
        process->deleteLater();
        process_ = nullptr;
    });
    process->setStandardInputFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setChildProcessModifier(BecomeOnesOwn);
    process->start(FromPath(program_), {FromPath(page)}, QIODevice::ReadOnly);
}

void Viewer::End(QProcess& process) {
    process.disconnect(process.parent());
    const auto group = static_cast<pid_t>(process.processId());
    if (group <= 0) return;
    // Both: right after the fork there is no group yet, and nothing but this one process.
    ::kill(-group, SIGKILL);
    process.kill();
}

void Viewer::Complain(const QString& why) {
    if (std::exchange(complained_, true)) return;
    std::fprintf(stderr, "Sorakaze: pages stay silent, because %s has ended: %s\n", program_.c_str(),
                 qPrintable(why));
}

}  // namespace sorakaze::viewer
