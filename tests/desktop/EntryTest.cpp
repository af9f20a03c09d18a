// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <filesystem>

namespace sorakaze::desktop {
namespace {

/// The Exec line's arguments, undone as a launcher undoes them: first the value's own escapes, then the
/// quotes.
QStringList ExecOf(const QString& entry) {
    QFile file(entry);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << entry.toStdString();
    QString line;
    while (!file.atEnd() && !line.startsWith("Exec=")) line = QString::fromUtf8(file.readLine()).trimmed();
    line = line.mid(5).replace("\\\\", "\\");
    QStringList arguments{""};
    bool quoted = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        if (line[i] == '"') {
            quoted = !quoted;
        } else if (line[i] == ' ' && !quoted) {
            arguments.append(QString());
        } else {
            if (line[i] == '\\' && quoted) ++i;
            arguments.back() += line[i];
        }
    }
    return arguments;
}

TEST(Entry, StartsTheApplicationWhereverItsFolderIs) {
    const QTemporaryDir root;
    const std::filesystem::path station = (root.path() + "/A \"b\" $HOME `x` 空").toStdString();
    const std::filesystem::path programs = station / "Sorakaze.app/Contents/Linux";
    std::filesystem::create_directories(programs);
    QFile program(QString::fromStdString((programs / "Sorakaze").string()));
    ASSERT_TRUE(program.open(QIODevice::WriteOnly));
    program.write("#!/bin/sh\nprintf '%s|%s' \"$0\" \"$#\"\n");
    program.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    program.close();
    const auto entry = station / "Sorakaze.desktop";
    const auto link = std::filesystem::path(root.path().toStdString()) / "on the desktop.desktop";
    std::filesystem::copy_file(SORAKAZE_ENTRY, entry);
    std::filesystem::create_symlink(entry, link);

    for (const auto& clicked : {entry, link}) {
        QStringList arguments = ExecOf(SORAKAZE_ENTRY);
        ASSERT_EQ(arguments.back(), "%k");
        arguments.back() = QString::fromStdString(clicked.string());
        QProcess launcher;
        launcher.start(arguments.takeFirst(), arguments);
        ASSERT_TRUE(launcher.waitForFinished());
        EXPECT_EQ(launcher.readAll(), program.fileName() + "|0")
            << launcher.readAllStandardError().toStdString();
    }
}

}  // namespace
}  // namespace sorakaze::desktop
