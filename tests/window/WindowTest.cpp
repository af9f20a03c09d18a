// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The window's view with Qt's offscreen platform: what stands where, both ways of the binding, and the main
// thread's waits within Qt's loop.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QTest>
#include <QTimer>
#include <deque>

#include "app/runtime/Application.h"
#include "app/window/QtHost.h"
#include "app/window/QtLoop.h"
#include "app/window/WindowView.h"
#include "tests/support/FakePlayer.h"
#include "tests/support/TestRuntime.h"

namespace sorakaze {
namespace {

/// A desktop without sound; steps run one after the other while its loop runs, each when the one before has
/// returned.
struct TestDesktop {
    explicit TestDesktop(const std::string& program = "mode: songs 1\nopening: 0, wait 60\n") {
        folder.Write("Programs/Show.txt", program);
        std::filesystem::create_directories(folder.Path() / "Sorakaze.app/Contents/Resources");
        player.tracks.assign(3, {"Title\tArtist\tAlbum", 600});
        window.Event_Open();
        host.SetParent(&view);
        view.show();
    }
    ~TestDesktop() { host.Close(); }

    void Then(std::function<void()> step) { steps.push_back(std::move(step)); }
    /// Runs the loop until all steps are done.
    void Run() {
        QTimer pace;
        QObject::connect(&pace, &QTimer::timeout, [this] {
            if (steps.empty()) {
                runtime.Events().Quit();
                QCoreApplication::quit();
                return;
            }
            auto step = std::move(steps.front());
            steps.pop_front();
            step();
        });
        pace.start(30);
        loop.Run();
    }

    template <typename Widget>
    Widget& Find(const char* name) {
        return *view.findChild<Widget*>(name);
    }

    test::TemporaryFolder folder;
    window::QtHost host;
    Runtime runtime{{std::make_unique<WallClock>(), folder.Path(), nullptr, 1}, host};
    window::QtLoop loop{runtime};
    test::FakePlayer player{runtime.Scripts()};
    mainWindow window;
    window::WindowView view{window, runtime};
    std::deque<std::function<void()>> steps;
};

TEST(Window, StandsAsItShould) {
    TestDesktop desktop;
    EXPECT_EQ(desktop.view.windowTitle(), "Sorakaze");
    EXPECT_EQ(desktop.view.size(), QSize(416, 147));
    EXPECT_EQ(desktop.view.minimumSize(), desktop.view.maximumSize()) << "not to be resized";
    EXPECT_TRUE(desktop.view.windowFlags() & Qt::WindowCloseButtonHint);
    EXPECT_FALSE(desktop.view.windowFlags() & Qt::WindowMaximizeButtonHint);
    EXPECT_EQ(desktop.Find<QComboBox>("programMenu").geometry(), QRect(121, 13, 275, 20));
    EXPECT_EQ(desktop.Find<QComboBox>("playlistMenu").geometry(), QRect(121, 44, 275, 20));
    EXPECT_EQ(desktop.Find<QPushButton>("programStart").geometry(), QRect(316, 107, 80, 20));
    EXPECT_EQ(desktop.Find<QSlider>("songDurationSlider").geometry(), QRect(121, 79, 234, 16));
    const auto labels = desktop.view.findChildren<QLabel*>(Qt::FindDirectChildrenOnly);
    ASSERT_EQ(labels.size(), 4);
    for (const QLabel* label : labels) {
        EXPECT_LE(label->fontMetrics().horizontalAdvance(label->text()), label->width())
            << label->text().toStdString();
    }
    EXPECT_EQ(desktop.Find<QComboBox>("programMenu").currentText(), "Show");
    EXPECT_EQ(desktop.Find<QComboBox>("playlistMenu").count(), 2);
    EXPECT_EQ(desktop.Find<QPushButton>("programStart").text(), "再生");
    EXPECT_EQ(desktop.Find<QComboBox>("programMenu").accessibleName(), "番組タイトル");
    EXPECT_FALSE(desktop.Find<QSlider>("songDurationSlider").accessibleName().isEmpty());
}

TEST(Window, TheButtonStartsAndStopsByMouseAndKeyboard) {
    TestDesktop desktop;
    auto& button = desktop.Find<QPushButton>("programStart");
    const auto onAir = [&] {
        return button.text() == "停止" && !desktop.Find<QComboBox>("programMenu").isEnabled();
    };
    desktop.Then([&] { QTest::mouseClick(&button, Qt::LeftButton); });
    desktop.Then([&] { EXPECT_TRUE(onAir()); });
    desktop.Then([&] { QTest::keyClick(&button, Qt::Key_Space); });
    desktop.Then([] {});
    desktop.Then([&] { EXPECT_FALSE(onAir()); });
    desktop.Then([&] { QTest::keyClick(&button, Qt::Key_Return); });
    desktop.Then([&] { EXPECT_TRUE(onAir()); });
    desktop.Run();
}

TEST(Window, TheSliderMovesTheLabelAndTheShow) {
    TestDesktop desktop;
    auto& slider = desktop.Find<QSlider>("songDurationSlider");
    desktop.Then([&] { slider.setValue(30); });
    desktop.Then([&] {
        EXPECT_EQ(desktop.window.songDuration.Text().Bytes(), "30");
        EXPECT_EQ(desktop.window.songDurationSlider.Value(), 30);
    });
    desktop.Run();
}

TEST(Window, WhileAFadeHoldsTheMainThreadTheToolkitIsServed) {
    TestDesktop desktop("mode: songs 9\nopening: 0, play [[iTunes]]\n");
    bool fading = false;
    int served = 0;
    desktop.runtime.Scripts().Register(static_cast<std::int32_t>(PlayerScript::fadeOutTrack),
                                       [&](const auto&) {
                                           fading = true;
                                           const std::int32_t begin = Ticks();
                                           WaitWhile([&] { return Ticks() - begin < 40; });
                                           fading = false;
                                           desktop.player.playing = 0;
                                           return String();
                                       });
    desktop.runtime.Scripts().Register(static_cast<std::int32_t>(PlayerScript::getPosition),
                                       [](const auto&) -> String { return "9999"; });
    auto& button = desktop.Find<QPushButton>("programStart");
    desktop.Then([&] { QTest::mouseClick(&button, Qt::LeftButton); });
    for (int i = 0; i < 16; ++i) {
        desktop.Then([&] { served += fading ? 1 : 0; });
    }
    desktop.Run();
    EXPECT_GT(served, 3) << "Qt's loop is served during the fade";
    EXPECT_EQ(desktop.player.log.at(0), "play Library 1");
}

TEST(Window, AMessageOfAShowThreadStopsThatThreadAlone) {
    TestDesktop desktop("mode: songs 1\nopening: 0, play Sounds/gone.wav\nopening: 0, wait 60\n");
    auto& button = desktop.Find<QPushButton>("programStart");
    const auto box = [&]() -> QDialog* { return desktop.view.findChild<QDialog*>("message"); };
    desktop.Then([&] { QTest::mouseClick(&button, Qt::LeftButton); });
    desktop.Then([] {});
    desktop.Then([&] {
        ASSERT_TRUE(box());
        EXPECT_FALSE(box()->isModal());
        EXPECT_EQ(desktop.window.commandExecThread.State(), Thread::kRunning);
    });
    // The window goes on working: a stop ends the show, and the question goes with its thread.
    desktop.Then([&] { QTest::mouseClick(&button, Qt::LeftButton); });
    desktop.Then([] {});
    desktop.Then([&] {
        EXPECT_EQ(button.text(), "再生");
        EXPECT_FALSE(box() && box()->isVisible());
    });
    desktop.Run();
}

TEST(Window, ClosingDuringAFadeEndsAtOnceAndAPressWaitsForItsEnd) {
    for (const bool close : {false, true}) {
        TestDesktop desktop("mode: songs 9\nopening: 0, play [[iTunes]]\nintro: 0, wait 60\n");
        bool fading = false;
        bool faded = false;
        desktop.runtime.Scripts().Register(
            static_cast<std::int32_t>(PlayerScript::fadeOutTrack), [&](const auto&) {
                fading = true;
                const std::int32_t begin = Ticks();
                WaitWhile([&] { return Ticks() - begin < (close ? 6000 : 20); });
                fading = false;
                faded = true;
                desktop.player.playing = 0;
                return String();
            });
        desktop.runtime.Scripts().Register(static_cast<std::int32_t>(PlayerScript::getPosition),
                                           [](const auto&) -> String { return "9999"; });
        desktop.view.onClose = [&] {
            desktop.runtime.Events().Quit();
            QCoreApplication::quit();
        };
        auto& button = desktop.Find<QPushButton>("programStart");
        desktop.Then([&] { QTest::mouseClick(&button, Qt::LeftButton); });
        for (int i = 0; i < 12; ++i) {
            desktop.Then([&] {
                if (!fading) return;
                desktop.steps.clear();
                if (close) desktop.view.close();
                if (close) return;
                QTest::mouseClick(&button, Qt::LeftButton);
                EXPECT_EQ(desktop.player.log.size(), 1u) << "the press is kept until the fade has ended";
                for (int wait = 0; wait < 15; ++wait) desktop.Then([] {});
            });
        }
        desktop.Run();
        EXPECT_EQ(faded, !close);
        EXPECT_EQ(button.text() == "再生", !close);
    }
}

TEST(Window, ClosingDuringAJingleEndsAtOnce) {
    TestDesktop desktop("mode: songs 1\nopening: 0, wait 0\nending: 0, wait 600\nmode: songs 0\n");
    desktop.view.onClose = [&] {
        desktop.runtime.Events().Quit();
        QCoreApplication::quit();
    };
    desktop.Then([&] { QTest::mouseClick(&desktop.Find<QPushButton>("programStart"), Qt::LeftButton); });
    for (int i = 0; i < 12; ++i) desktop.Then([] {});
    desktop.Then([&] {
        EXPECT_EQ(desktop.window.command, desktop.window.ending)
            << "the main thread is in the wait for the ending";
        desktop.view.close();
    });
    desktop.Then([] { FAIL() << "the loop has not ended"; });
    desktop.Run();
    EXPECT_EQ(desktop.steps.size(), 1u);
}

}  // namespace
}  // namespace sorakaze

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
