// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <filesystem>

namespace sorakaze::desktop {
namespace {

TEST(Entry, StartsTheApplicationWhereverItsFolderIs) {
    const QTemporaryDir root;
    const std::filesystem::path station = (root.path() + "/A \"b\" $HOME `x` 空").toStdString();
    std::filesystem::create_directories(station / "Sorakaze.app/Contents/Linux");
    QFile program(QString::fromStdString(station) + "/Sorakaze.app/Contents/Linux/Sorakaze");
    ASSERT_TRUE(program.open(QIODevice::WriteOnly));
    program.write("#!/bin/sh\nprintf '%s|%s' \"$0\" \"$#\"\n");
    program.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    program.close();
    const auto link = std::filesystem::path(root.path().toStdString()) / "on the desktop.desktop";
    std::filesystem::copy_file(SORAKAZE_ENTRY, station / "Sorakaze.desktop");
    std::filesystem::create_symlink(station / "Sorakaze.desktop", link);

    QFile entry(SORAKAZE_ENTRY);
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    QString line;
    while (!entry.atEnd() && !line.startsWith("Exec=")) line = QString::fromUtf8(entry.readLine()).trimmed();
    ASSERT_TRUE(line.endsWith(" %k"));
    // What a launcher takes off first are the value's own escapes; the quotes that stay are a shell's.
    line = line.mid(5).chopped(3).replace("\\\\", "\\") + " \"$0\"";
    for (const auto& clicked : {station / "Sorakaze.desktop", link}) {
        QProcess launcher;
        launcher.start("sh", {"-c", line, QString::fromStdString(clicked)});
        ASSERT_TRUE(launcher.waitForFinished());
        EXPECT_EQ(launcher.readAll(), program.fileName() + "|0")
            << launcher.readAllStandardError().toStdString();
    }
}

}  // namespace
}  // namespace sorakaze::desktop
