// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The tests, and with --claim FOLDER an instance that a test can start and kill.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <cstdio>
#include <string>

#include "app/desktop/SingleInstance.h"
#include "tests/desktop/PrivateBus.h"

namespace {

void Say(const char* word) {
    std::puts(word);
    std::fflush(stdout);
}

int BeAnInstance(const char* folder) {
    const auto instance = sorakaze::desktop::SingleInstance::Claim(folder, [] { Say("raised"); });
    Say(instance ? "first" : "second");
    return instance ? QCoreApplication::exec() : 0;
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    if (argc == 3 && std::string(argv[1]) == "--claim") return BeAnInstance(argv[2]);
    sorakaze::desktop::PrivateBus::SetEnvironment();
    return RUN_ALL_TESTS();
}
