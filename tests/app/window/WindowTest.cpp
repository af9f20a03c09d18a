// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The window's view with Qt's offscreen platform: what is where, both ways of the binding, and the main
// thread's waits within Qt's loop.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QFontDatabase>
#include <QHelpEvent>
#include <QMessageBox>
#include <QTest>
#include <QTimer>
#include <QToolTip>
#include <algorithm>
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
        view.onClose = [this] { Quit(); };
        view.show();
    }
    ~TestDesktop() { host.Close(); }

    void Quit() {
        runtime.Events().Quit();
        QCoreApplication::quit();
    }
    void Press() { QTest::mouseClick(&button, Qt::LeftButton); }
    void Then(std::function<void()> step) { steps.push_back(std::move(step)); }
    /// The next step waits until `holds`.
    void Await(const std::function<bool()>& holds) { Then(Waiting(holds)); }
    std::function<void()> Waiting(const std::function<bool()>& holds) {
        return [this, holds] {
            if (!holds()) steps.push_front(Waiting(holds));
        };
    }
    /// Runs the loop until all steps are done.
    void Run() {
        QTimer pace;
        QObject::connect(&pace, &QTimer::timeout, [this] {
            if (steps.empty()) return Quit();
            auto step = std::move(steps.front());
            steps.pop_front();
            step();
        });
        pace.start(30);
        loop.Run();
    }

    test::TemporaryFolder folder;
    window::QtHost host;
    Runtime runtime{{std::make_unique<WallClock>(), folder.Path(), nullptr, 1}, host};
    window::QtLoop loop{runtime};
    test::FakePlayer player{runtime.Scripts()};
    mainWindow window;
    window::WindowView view{window, runtime};
    QPushButton& button = *view.findChild<QPushButton*>("programStart");
    window::MenuBox& menu = *static_cast<window::MenuBox*>(view.findChild<QComboBox*>("programMenu"));
    QSlider& slider = *view.findChild<QSlider*>("songDurationSlider");
    std::deque<std::function<void()>> steps;
};

TEST(Window, StandsAsItShouldAndGoesBothWays) {
    TestDesktop desktop;
    EXPECT_EQ(desktop.view.minimumSize(), desktop.view.maximumSize()) << "not to be resized";
    EXPECT_EQ(desktop.view.size(), QSize(416, 147));
    EXPECT_EQ(desktop.menu.geometry(), QRect(121, 13, 275, 20));
    EXPECT_EQ(desktop.view.findChild<QComboBox*>("playlistMenu")->geometry(), QRect(121, 44, 275, 20));
    EXPECT_EQ(desktop.slider.geometry(), QRect(121, 79, 234, 16));
    EXPECT_EQ(desktop.button.geometry(), QRect(316, 107, 80, 20));
    EXPECT_EQ(desktop.view.findChildren<QLabel*>(Qt::FindDirectChildrenOnly).size(), 4);
    EXPECT_EQ(desktop.menu.currentText(), "Show");
    EXPECT_EQ(desktop.menu.accessibleName(), "番組タイトル");
    for (const QLabel* label : desktop.view.findChildren<QLabel*>(Qt::FindDirectChildrenOnly))
        EXPECT_LE(label->fontMetrics().horizontalAdvance(label->text()), label->width())
            << label->text().toStdString();
    for (const char* onAir : {"停止", "再生"}) {
        desktop.Then([&] { QTest::keyClick(&desktop.button, Qt::Key_Return); });
        desktop.Await([&, onAir] { return desktop.button.text() == onAir; });
        desktop.Then([&] { EXPECT_EQ(desktop.menu.isEnabled(), desktop.button.text() == "再生"); });
    }
    desktop.Then([&] { desktop.slider.setValue(30); });
    desktop.Await([&] { return desktop.window.songDuration.Text() == "30"; });
    desktop.Then([&] { EXPECT_EQ(desktop.window.songDurationSlider.Value(), 30); });
    desktop.Run();
}

TEST(Window, LongNamesAreCutWithTheWholeAsTooltipAndLatinIsNotDrawnByAJapaneseFont) {
    TestDesktop desktop;
    EXPECT_EQ(desktop.menu.ShownText(), "Show");
    const QString name = QString("a <b>name</b> ").repeated(9);
    desktop.menu.setItemText(0, name);
    EXPECT_TRUE(desktop.menu.ShownText().endsWith("…")) << desktop.menu.ShownText().toStdString();
    QHelpEvent hover(QEvent::ToolTip, QPoint(9, 9), desktop.menu.mapToGlobal(QPoint(9, 9)));
    QCoreApplication::sendEvent(&desktop.menu, &hover);
    EXPECT_EQ(QToolTip::text(), "<qt>" + name.toHtmlEscaped() + "</qt>");
    const QStringList families = desktop.menu.font().families();
    const auto installed = std::find_if(families.begin(), families.end(), [](const QString& family) {
        return QFontDatabase::hasFamily(family);
    });
    ASSERT_NE(installed, families.end());
    EXPECT_EQ(*installed, QFontInfo(QFont()).family());
}

TEST(Window, AMessageOfAShowThreadStopsThatThreadAlone) {
    TestDesktop desktop("mode: songs 1\nopening: 0, play Sounds/gone.wav\nopening: 0, wait 60\n");
    const auto box = [&] { return desktop.view.findChild<QDialog*>("message"); };
    desktop.Then([&] { desktop.Press(); });
    desktop.Await([&] { return box() != nullptr; });
    desktop.Then([&] {
        EXPECT_FALSE(box()->isModal());
        desktop.runtime.Threads().WithBaton(
            [&] { EXPECT_EQ(desktop.window.commandExecThread.State(), Thread::kRunning); });
    });
    // The window goes on working: a stop ends the show, and the question goes with its thread.
    desktop.Then([&] { desktop.Press(); });
    desktop.Await([&] { return desktop.button.text() == "再生" && !(box() && box()->isVisible()); });
    desktop.Run();
}

TEST(Window, AMessageThatNobodyAnswersStaysReadableWhileTheShowGoesOn) {
    TestDesktop desktop(
        "mode: songs 1\nopening: 0, play Sounds/<b>1\nopening: 0, play Sounds/2\nopening: 0, wait 60\n");
    desktop.runtime.AnswerMessagesAfter(0.1);
    const auto box = [&] { return desktop.view.findChild<QMessageBox*>("message"); };
    const auto list = [&] { return desktop.view.findChild<QDialog*>("leftMessages"); };
    desktop.Then([&] { desktop.Press(); });
    desktop.Await([&] { return box() && box()->text().contains("Sounds/2"); });
    desktop.Then([&] {
        EXPECT_TRUE(box()->isVisible());
        EXPECT_TRUE(box()->informativeText().contains("Show.txt, line 3<"))
            << box()->informativeText().toStdString();
        EXPECT_TRUE(desktop.view.toolTip().contains("there is no such file"));
        EXPECT_FALSE(desktop.view.toolTip().contains("<b>"));
        desktop.view.actions().front()->trigger();
    });
    desktop.Await([&] { return list() && !box(); });
    desktop.Then([&] {
        const QString text = list()->findChild<QPlainTextEdit*>()->toPlainText();
        EXPECT_TRUE(text.contains("Sounds/<b>1") && text.contains("Sounds/2")) << text.toStdString();
        EXPECT_EQ(desktop.view.toolTip(), "");
        EXPECT_FALSE(desktop.view.actions().front()->isEnabled());
        desktop.Press();
    });
    desktop.Await([&] { return desktop.button.text() == "再生"; });
    desktop.Run();
}

TEST(Window, ClosingDuringAFadeOrAJingleEndsAtOnceAndAPressWaitsForTheEndOfAFade) {
    const std::string tracks = "mode: songs 9\nopening: 0, play [[iTunes]]\nintro: 0, wait 60\n";
    const std::string jingle = "mode: songs 1\nopening: 0, wait 0\nending: 0, wait 600\nmode: songs 0\n";
    for (const auto& [program, close] : {std::pair(tracks, false), {tracks, true}, {jingle, true}}) {
        TestDesktop desktop(program);
        bool fading = false;
        bool faded = false;
        auto& scripts = desktop.runtime.Scripts();
        scripts.Register(static_cast<std::int32_t>(PlayerScript::fadeOutTrack),
                         [&, close = close](const auto&) {
                             fading = true;
                             const std::int32_t begin = Ticks();
                             WaitWhile([&] { return Ticks() - begin < (close ? 6000 : 20); });
                             fading = false;
                             faded = true;
                             desktop.player.playing = 0;
                             return String();
                         });
        scripts.Register(static_cast<std::int32_t>(PlayerScript::getPosition),
                         [](const auto&) -> String { return "9999"; });
        desktop.Then([&] { desktop.Press(); });
        desktop.Await([&] { return fading || desktop.window.command == desktop.window.ending; });
        if (close) {
            desktop.Then([&] { desktop.view.close(); });
            desktop.Then([] { ADD_FAILURE() << "the loop has not ended"; });
        } else {
            desktop.Then([&] {
                desktop.Press();
                EXPECT_EQ(desktop.player.log.size(), 1u) << "the press is kept until the fade has ended";
            });
            desktop.Await([&] { return faded && desktop.button.text() == "再生"; });
        }
        desktop.Run();
        EXPECT_EQ(desktop.steps.size(), close ? 1u : 0u);
        EXPECT_EQ(faded, !close);
        EXPECT_EQ(desktop.button.text() == "再生", !close);
    }
}

}  // namespace
}  // namespace sorakaze

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
