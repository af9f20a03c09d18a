// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <iostream>

#include "app/desktop/SingleInstance.h"
#include "tests/app/desktop/RunUntil.h"

namespace sorakaze::desktop {
namespace {

namespace fs = std::filesystem;

struct SingleInstanceTest : testing::Test {
    SingleInstanceTest() {
        fs::create_directory(folder);
        fs::create_symlink(folder, folder.string() + " link");
        qputenv("TMPDIR", QFile::encodeName(root.path()));
        SetRuntime(root.path());
        SetCache("/proc/none");
    }
    ~SingleInstanceTest() override {
        cacheBefore.isNull() ? qunsetenv("XDG_CACHE_HOME") : qputenv("XDG_CACHE_HOME", cacheBefore);
        qputenv("XDG_RUNTIME_DIR", runtimeBefore);
        qunsetenv("TMPDIR");
    }

    static void SetRuntime(const QString& path) { qputenv("XDG_RUNTIME_DIR", QFile::encodeName(path)); }

    static void SetCache(const QString& path) { qputenv("XDG_CACHE_HOME", QFile::encodeName(path)); }

    std::unique_ptr<SingleInstance> Claim(const fs::path& which) {
        return SingleInstance::Claim(which, [this] { ++seconds; });
    }
    static std::string Line(QProcess& process) {
        while (!process.canReadLine() && process.waitForReadyRead()) continue;
        return process.readLine().trimmed().toStdString();
    }

    const QByteArray runtimeBefore = qgetenv("XDG_RUNTIME_DIR");
    const QByteArray cacheBefore = qgetenv("XDG_CACHE_HOME");
    const QTemporaryDir root;
    const fs::path folder = fs::path(root.path().toStdString()) / "My Station 空";
    int seconds = 0;
};

TEST_F(SingleInstanceTest, ASecondOneOfTheSameFolderBringsTheFirstToTheFrontEvenAfterACrash) {
    // This program again, which claims the folder and says how that went.
    QProcess crashing;
    crashing.start(
        QCoreApplication::applicationFilePath(),
        {"--claim", QString::fromStdString(folder / ".." / (folder.filename().string() + " link"))});
    ASSERT_EQ(Line(crashing), "first");
    EXPECT_EQ(Claim(folder), nullptr);
    EXPECT_EQ(Line(crashing), "raised");
    crashing.kill();
    ASSERT_TRUE(crashing.waitForFinished());
    EXPECT_EQ(QDir(root.path()).entryList({"*.socket"}, QDir::System).size(), 1) << "the crash left it";

    for (int run = 0; run < 2; ++run) {
        const auto first = Claim(folder);
        ASSERT_NE(first, nullptr);
        EXPECT_EQ(Claim(folder), nullptr);
        EXPECT_TRUE(RunUntil([&] { return std::exchange(seconds, 0) == 1; }));
        EXPECT_TRUE(fs::is_empty(folder)) << "the folder itself is left alone";
        EXPECT_NE(Claim(folder.parent_path()), nullptr) << "another folder is another station";
    }
}

TEST_F(SingleInstanceTest, OthersReachNothingAndWithoutARuntimeDirectoryATemporaryFolderServesIfItIsOurs) {
    const QString longName = root.filePath(QString(90, 'x')), open = root.filePath("open");
    for (const QString& name : {longName, open}) ASSERT_TRUE(QDir().mkpath(name));
    fs::permissions(open.toStdString(), fs::perms::all);
    for (const QString& useless : {QString(), QString("relative"), open, longName, root.path()}) {
        SetRuntime(useless);
        const auto first = Claim(folder);
        ASSERT_NE(first, nullptr);
        EXPECT_EQ(Claim(folder), nullptr) << useless.toStdString();
        for (const auto& found : fs::directory_iterator(root.path().toStdString())) {
            if (found.is_directory()) continue;
            EXPECT_EQ(found.status().permissions() & fs::perms(077), fs::perms::none) << found;
        }
    }
    // Where somebody else may write, nothing is claimed, and the station runs all the same.
    const QStringList own = QDir(root.path()).entryList({"sorakaze-*"}, QDir::Dirs);
    ASSERT_EQ(own.size(), 1);
    fs::permissions(root.filePath(own.front()).toStdString(), fs::perms::all);
    SetRuntime({});
    {
        const auto first = Claim(folder);
        EXPECT_NE(first, nullptr);
        EXPECT_NE(Claim(folder), nullptr);
    }
    // A neighbour who takes that folder can't keep the home's from serving.
    SetCache(root.filePath("home/.cache"));
    const auto first = Claim(folder);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(Claim(folder), nullptr);
}

}  // namespace
}  // namespace sorakaze::desktop

/// The tests, and with --claim FOLDER an instance that a test can start and kill.
int main(int argc, char** argv) {
    using namespace sorakaze::desktop;
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    if (argc != 3) return RUN_ALL_TESTS();
    const auto instance = SingleInstance::Claim(argv[2], [] { std::cout << "raised" << std::endl; });
    std::cout << (instance ? "first" : "second") << std::endl;
    return instance ? QCoreApplication::exec() : 0;
}
