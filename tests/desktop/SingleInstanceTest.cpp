// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <filesystem>

#include "app/desktop/SingleInstance.h"
#include "tests/desktop/RunUntil.h"

namespace sorakaze::desktop {
namespace {

namespace fs = std::filesystem;

struct SingleInstanceTest : testing::Test {
    SingleInstanceTest() {
        fs::create_directory(folder);
        SetRuntime(root.path());
    }
    ~SingleInstanceTest() override {
        fs::permissions(folder, fs::perms::owner_all);
        qputenv("XDG_RUNTIME_DIR", runtimeBefore);
        qputenv("TMPDIR", temporaryBefore);
    }

    static void SetRuntime(const QString& path) { qputenv("XDG_RUNTIME_DIR", QFile::encodeName(path)); }

    std::unique_ptr<SingleInstance> Claim(const fs::path& which) {
        return SingleInstance::Claim(which, [this] { ++seconds; });
    }

    /// This program again, which claims the folder and says how that went ("first", "second", then "raised").
    std::unique_ptr<QProcess> Start(const fs::path& which) {
        auto process = std::make_unique<QProcess>();
        process->start(QCoreApplication::applicationFilePath(),
                       {"--claim", QString::fromStdString(which.string())});
        return process;
    }

    static std::string Line(QProcess& process) {
        while (!process.canReadLine() && process.waitForReadyRead()) continue;
        return process.readLine().trimmed().toStdString();
    }

    const QByteArray runtimeBefore = qgetenv("XDG_RUNTIME_DIR");
    const QByteArray temporaryBefore = qgetenv("TMPDIR");
    const QTemporaryDir root;
    const fs::path folder = fs::path(root.path().toStdString()) / "My Station 空";
    int seconds = 0;
};

TEST_F(SingleInstanceTest, ASecondOneOfTheSameFolderBringsTheFirstToTheFront) {
    fs::create_symlink(folder, folder.string() + " link");
    const auto first = Claim(folder);
    ASSERT_NE(first, nullptr);
    const auto second = Start(folder / ".." / (folder.filename().string() + " link"));
    EXPECT_EQ(Line(*second), "second");
    EXPECT_TRUE(second->waitForFinished());
    EXPECT_TRUE(RunUntil([&] { return seconds == 1; }));

    fs::create_directory(folder / "other");
    EXPECT_NE(Claim(folder / "other"), nullptr) << "another folder is another station";
}

TEST_F(SingleInstanceTest, TheNextOneMayRunWhenTheFirstHasEnded) {
    ASSERT_NE(Claim(folder), nullptr);
    const auto again = Claim(folder);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(Claim(folder), nullptr);
    EXPECT_TRUE(RunUntil([&] { return seconds == 1; }));
}

TEST_F(SingleInstanceTest, AnInstanceThatCrashedIsNoObstacle) {
    const auto crashing = Start(folder);
    ASSERT_EQ(Line(*crashing), "first");
    EXPECT_EQ(Claim(folder), nullptr);
    EXPECT_EQ(Line(*crashing), "raised");
    crashing->kill();
    ASSERT_TRUE(crashing->waitForFinished());
    EXPECT_EQ(QDir(root.path()).entryList({"*.socket"}, QDir::System).size(), 1) << "the crash left it";

    const auto first = Claim(folder);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(Claim(folder), nullptr);
    EXPECT_TRUE(RunUntil([&] { return seconds == 1; }));
}

TEST_F(SingleInstanceTest, OthersCanReachNeitherTheLockNorTheSocket) {
    const auto first = Claim(folder);
    const QDir shared(root.path());
    const QStringList names = shared.entryList({"*.lock", "*.socket"}, QDir::Files | QDir::System);
    ASSERT_EQ(names.size(), 2);
    for (const QString& name : names) {
        struct stat found = {};
        ASSERT_EQ(stat(QFile::encodeName(shared.filePath(name)), &found), 0);
        EXPECT_EQ(found.st_mode & 077, 0u) << name.toStdString();
    }
}

TEST_F(SingleInstanceTest, TheFolderItselfIsLeftAlone) {
    fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    const auto first = Claim(folder);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(Claim(folder), nullptr);
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(SingleInstanceTest, WithoutARuntimeDirectoryATemporaryFolderServesIfItIsOurs) {
    const QString longName = root.filePath(QString(90, 'x'));
    ASSERT_TRUE(QDir().mkpath(longName));
    ASSERT_TRUE(QDir().mkpath(root.filePath("open")));
    fs::permissions(root.filePath("open").toStdString(), fs::perms::all);
    qputenv("TMPDIR", QFile::encodeName(root.path()));
    for (const QString& useless : {QString(), QString("relative"), root.filePath("open"), longName}) {
        SetRuntime(useless);
        const auto first = Claim(folder);
        ASSERT_NE(first, nullptr);
        EXPECT_EQ(Claim(folder), nullptr) << useless.toStdString();
    }
    const QStringList own = QDir(root.path()).entryList({"sorakaze-*"}, QDir::Dirs);
    ASSERT_EQ(own.size(), 1);

    // Where somebody else may write, nothing is claimed, and the station runs all the same.
    fs::permissions(root.filePath(own.front()).toStdString(), fs::perms::all);
    const auto first = Claim(folder);
    EXPECT_NE(first, nullptr);
    EXPECT_NE(Claim(folder), nullptr);
}

}  // namespace
}  // namespace sorakaze::desktop
