// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/viewer/Viewer.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <csignal>
#include <cstdio>
#include <memory>
#include <utility>

#include "app/viewer/AudibleLines.h"
#include "base/FileDescriptor.h"

namespace sorakaze::viewer {
namespace {

/// The logic loads an empty page and then the real one: the first needn't be started.
constexpr int kStartDelayMilliseconds = 5;

/// How long to wait for a killed process.
constexpr int kKillWaitMilliseconds = 1000;

/// The most that is kept of a program's standard error.
constexpr int kMostSaid = 4096;

/// What a page's program says at its end may be new each time.
constexpr qsizetype kMostFailures = 20;

/// The most that a program may say on its standard output: a page is heard and silent a few times.
constexpr qsizetype kMostTold = 64 * 1024;

/// The longest page; real ones are shorter.
constexpr off_t kMostBytes = 8 << 20;

/// Between the fork and the program: a process group of its own, which ends as one and which a terminal's
/// Ctrl+C does not reach; no outliving the application, however that ends; and no signals held back.
void BecomeOnesOwn() {
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// Empty for what is no ordinary file, or too long for a page.
std::optional<std::string> ReadPage(const std::filesystem::path& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > kMostBytes)
        return std::nullopt;
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    const ssize_t length = ::pread(file.Get(), bytes.data(), bytes.size(), 0);
    if (length < 0) return std::nullopt;
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

/// A file without a name, to be read from its beginning. Throws nothing; empty where memory is short.
FileDescriptor InMemory(const std::string& bytes) {
    FileDescriptor file(::memfd_create("page", MFD_CLOEXEC));
    if (!file || ::pwrite(file.Get(), bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        return {};
    return file;
}

QString FromPath(const std::filesystem::path& path) {
    return QFile::decodeName(path.c_str());
}

QString LastLine(const QByteArray& text) {
    return QString::fromLocal8Bit(text.trimmed().split('\n').last().left(300));
}

}  // namespace

Viewer::Viewer(std::filesystem::path program) : program_(std::move(program)) {
    startDelay_.setSingleShot(true);
    startDelay_.setTimerType(Qt::PreciseTimer);
    startDelay_.setInterval(kStartDelayMilliseconds);
    connect(&startDelay_, &QTimer::timeout, this, [this] { Begin(); });
}

Viewer::~Viewer() {
    const auto processes = findChildren<QProcess*>();
    for (QProcess* process : processes) End(*process);
    for (QProcess* process : processes) process->waitForFinished(kKillWaitMilliseconds);
}

void Viewer::Load(const std::filesystem::path& page, Service service) {
    auto html = ReadPage(page);
    {
        const std::lock_guard lock(mutex_);
        next_.reset();
        if (html) next_ = Page{*std::move(html), std::move(service)};
    }
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (process_) End(*std::exchange(process_, nullptr));
            SetAudible(false);
            startDelay_.start();
        },
        Qt::QueuedConnection);
}

void Viewer::Begin() {
    std::optional<Page> page;
    {
        const std::lock_guard lock(mutex_);
        page = std::exchange(next_, std::nullopt);
    }
    if (page) return Start(*page);
    ReportFailure("the page can't be read");
}

void Viewer::Start(const Page& page) {
    process_ = new QProcess(this);
    QProcess* const process = process_;
    connect(process, &QProcess::finished, process, &QObject::deleteLater);
    const QString ended = FromPath(program_) + " has ended: ";
    const auto said = std::make_shared<QByteArray>();
    connect(process, &QProcess::readyReadStandardError, this, [this, process, said] {
        *said = (*said + process->readAllStandardError()).right(kMostSaid);
        const auto begin = said->indexOf(kWarningPrefix);
        const auto end = begin < 0 ? begin : said->indexOf('\n', begin);
        if (end >= 0) ReportWarning(said->mid(begin, end - begin));
    });
    connect(process, &QProcess::finished, this, [this, said, ended] {
        ReportFailure(ended + LastLine(*said));
        process_ = nullptr;
        SetAudible(false);
    });
    connect(process, &QProcess::errorOccurred, this, [this, process, ended](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart) return;
        ReportFailure(ended + process->errorString());
        process->deleteLater();
        process_ = nullptr;
    });
    process->setStandardInputFile(QProcess::nullDevice());
    Listen(*process);
    const auto input = std::make_shared<FileDescriptor>(InMemory(Pack(page)));
    process->setChildProcessModifier([input] {
        BecomeOnesOwn();
        ::dup2(input->Get(), STDIN_FILENO);
    });
    process->start(FromPath(program_), {}, QIODevice::ReadOnly);
}

void Viewer::Listen(QProcess& process) {
    const auto lines = std::make_shared<AudibleLines>();
    const auto read = std::make_shared<qsizetype>(0);
    connect(&process, &QProcess::readyReadStandardOutput, this, [this, &process, lines, read] {
        const QByteArray bytes = process.readAllStandardOutput();
        *read += bytes.size();
        const bool tooMuch = *read > kMostTold;
        if (tooMuch) process.closeReadChannel(QProcess::StandardOutput);
        const auto audible = lines->Read({bytes.constData(), static_cast<std::size_t>(bytes.size())});
        if (audible || tooMuch) SetAudible(!tooMuch && *audible);
    });
}

void Viewer::SetAudible(bool audible) {
    if (std::exchange(audible_, audible) != audible && tellAudible_) tellAudible_(audible);
}

void Viewer::End(QProcess& process) {
    process.disconnect(process.parent());
    const auto group = static_cast<pid_t>(process.processId());
    if (group <= 0) return;
    // Both: right after the fork there is only this process and no group yet.
    ::kill(-group, SIGKILL);
    process.kill();
}

void Viewer::ReportFailure(const QString& why) {
    if (!tellFailure_ || reportedFailures_.size() >= kMostFailures || reportedFailures_.contains(why)) return;
    reportedFailures_.insert(why);
    tellFailure_(why.toStdString());
}

void Viewer::ReportWarning(const QByteArray& line) {
    if (!std::exchange(warningReported_, true)) std::fprintf(stderr, "%s\n", line.constData());
}

}  // namespace sorakaze::viewer
