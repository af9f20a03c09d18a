// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The window and its controls: where they are and which handler each event has.
#include "show/mainWindow.h"

namespace sorakaze {
namespace {

void Place(RectControl& control, std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height,
           std::int32_t tabIndex) {
    control.Left = left;
    control.Top = top;
    control.Width = width;
    control.Height = height;
    control.TabIndex = tabIndex;
}

void SetFont(RectControl& control, bool bold = false) {
    control.TextFont = "Lucida Grande";
    control.TextSize = 12;
    control.Bold = bold;
}

void MakeLabel(StaticText& label, std::int32_t top, std::int32_t tabIndex, const char* text) {
    Place(label, 20, top, 89, 20, tabIndex);
    SetFont(label, true);
    label.SetText(text);
}

}  // namespace

void mainWindow::Layout() {
    Title = "Sorakaze";
    Width = 416;
    Height = 147;
    MinWidth = MinHeight = 64;
    MaxWidth = MaxHeight = 32000;
    Placement = 0;
    Frame = 0;
    Resizeable = LiveResize = false;
    CloseButton = MinimizeButton = true;
    MaximizeButton = false;
    Visible = true;
    FullScreen = false;
    MenuBarVisible = true;
    Composite = true;
    HasBackColor = false;
    BackColor = 0xFFFFFF;
    MacProcID = 0;
}

void mainWindow::CreateControls() {
    _CreateControls0();
}

/// Handlers are installed only after the properties are set, so that setting those fires none of them.
void mainWindow::_CreateControls0() {
    // Kept behaviour 29: out of sight, as is voiceHTMLViewer.
    Place(resultField, 20, 170, 376, 116, 3);
    resultField.TextFont = "Osaka";

    Place(playlistMenu, 121, 44, 275, 20, 10);
    SetFont(playlistMenu);
    playlistMenu.SetListIndex(0);

    Place(programMenu, 121, 13, 275, 20, 11);
    SetFont(programMenu);
    programMenu.SetListIndex(0);

    Place(programStart, 316, 107, 80, 20, 12);
    SetFont(programStart);
    programStart.SetCaption(kStartCaption);
    programStart.Action = [this] { programStart_Action(); };

    MakeLabel(StaticText1, 12, 13, "番組タイトル :");
    MakeLabel(StaticText2, 43, 14, "プレイリスト :");

    commandExecThread.Constructor(this);
    commandExecThread.Priority = 5;
    commandExecThread.StackSize = 0;
    commandExecThread.RunEvent = [this] { commandExecThread_Run(); };

    mainTimer.Constructor(this);
    mainTimer.SetMode(Timer::kOff);
    mainTimer.SetPeriod(200);
    mainTimer.Action = [this] { mainTimer_Action(); };

    Place(songDurationSlider, 121, 79, 234, 16, 15);
    songDurationSlider.Minimum = 30;
    songDurationSlider.Maximum = 600;
    songDurationSlider.SetValue(600);
    songDurationSlider.LineStep = 1;
    songDurationSlider.PageStep = 20;
    songDurationSlider.LiveScroll = true;
    songDurationSlider.TickStyle = 0;
    songDurationSlider.ValueChanged = [this] { songDurationSlider_ValueChanged(); };

    MakeLabel(StaticText3, 75, 16, "曲の再生秒数 :");

    Place(songDuration, 361, 75, 35, 20, 17);
    SetFont(songDuration);
    songDuration.TextAlign = StaticText::kAlignRight;
    songDuration.SetText("600");

    Place(voiceHTMLViewer, 451, 98, 29, 31, 0);
    voiceHTMLViewer.MenuHandlers = {
        {"EditClear", [this] { voiceHTMLViewer.EditClear(); }},
        {"EditCopy", [this] { voiceHTMLViewer.EditCopy(); }},
        {"EditCut", [this] { voiceHTMLViewer.EditCut(); }},
        {"EditPaste", [this] { voiceHTMLViewer.EditPaste(); }},
        {"EditSelectAll", [this] { voiceHTMLViewer.EditSelectAll(); }},
    };

    getNextSong.Constructor(this);
    getNextSong.Priority = 5;
    getNextSong.StackSize = 0;
    getNextSong.RunEvent = [this] { getNextSong_Run(); };
}

}  // namespace sorakaze
