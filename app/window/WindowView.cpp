// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/window/WindowView.h"

#include <QCloseEvent>
#include <QFontInfo>
#include <QThread>
#include <algorithm>
#include <array>
#include <utility>

namespace sorakaze::window {
namespace {

/// The named font where the system has it, else the desktop's, then fonts that have Japanese. The desktop's
/// goes by the name of what it resolves to: it may be an alias such as "Sans Serif", which a list of families
/// passes over.
QFont FontOf(const RectControl& control) {
    QFont font;
    QStringList families{ToQt(control.TextFont)};
    families << QFontInfo(font).family() << "Noto Sans CJK JP"
             << "IPAGothic"
             << "IPAPGothic"
             << "VL Gothic"
             << "TakaoGothic";
    font.setFamilies(families);
    // The window is laid out in pixels, so its text sizes are pixels.
    if (control.TextSize > 0) font.setPixelSize(static_cast<int>(control.TextSize));
    font.setBold(control.Bold);
    font.setItalic(control.Italic);
    font.setUnderline(control.Underline);
    return font;
}

void Place(QWidget& widget, const RectControl& control) {
    widget.setGeometry(control.Left, control.Top, control.Width, control.Height);
    widget.setFont(FontOf(control));
    widget.setEnabled(control.Enabled());
    widget.setVisible(control.Visible);
    widget.setToolTip(ToQt(control.HelpTag));
}

/// A caption without the colon that leads to its control, for a screen reader.
QString NameFrom(const String& caption) {
    return ToQt(caption).remove(':').trimmed();
}

}  // namespace

QString ToQt(const String& text) {
    return QString::fromUtf8(text.Bytes().data(), static_cast<qsizetype>(text.Bytes().size()));
}

WindowView::WindowView(mainWindow& window, Runtime& runtime) : window_(window), runtime_(runtime) {
    ApplyWindowProperties();
    PlaceControls();
    BindMenu(window_.programMenu, programMenu_, "programMenu");
    programMenu_.setAccessibleName(NameFrom(window_.StaticText1.Text()));
    BindMenu(window_.playlistMenu, playlistMenu_, "playlistMenu");
    playlistMenu_.setAccessibleName(NameFrom(window_.StaticText2.Text()));
    BindButton();
    BindSlider();
    BindText(window_.StaticText1, [this](const QString& text) { staticText1_.setText(text); });
    BindText(window_.StaticText2, [this](const QString& text) { staticText2_.setText(text); });
    BindText(window_.StaticText3, [this](const QString& text) { staticText3_.setText(text); });
    BindText(window_.songDuration, [this](const QString& text) { songDuration_.setText(text); });
    BindText(window_.resultField, [this](const QString& text) { resultField_.setPlainText(text); });
    OrderTabs();
    programStart_.setFocus();
}

WindowView::~WindowView() {
    for (RectControl* control : std::initializer_list<RectControl*>{
             &window_.programMenu, &window_.playlistMenu, &window_.programStart, &window_.songDurationSlider,
             &window_.StaticText1, &window_.StaticText2, &window_.StaticText3, &window_.songDuration,
             &window_.resultField}) {
        control->Changed = nullptr;
    }
}

void WindowView::ApplyWindowProperties() {
    setObjectName("mainWindow");
    setWindowTitle(ToQt(window_.Title));
    setMinimumSize(window_.MinWidth, window_.MinHeight);
    setMaximumSize(window_.MaxWidth, window_.MaxHeight);
    if (window_.Resizeable) {
        resize(window_.Width, window_.Height);
    } else {
        setFixedSize(window_.Width, window_.Height);
    }
    Qt::WindowFlags flags =
        Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint;
    if (window_.CloseButton) flags |= Qt::WindowCloseButtonHint;
    if (window_.MinimizeButton) flags |= Qt::WindowMinimizeButtonHint;
    if (window_.MaximizeButton) flags |= Qt::WindowMaximizeButtonHint;
    setWindowFlags(flags);
}

void WindowView::PlaceControls() {
    const std::pair<QWidget*, const RectControl*> placed[] = {
        {&resultField_, &window_.resultField},   {&playlistMenu_, &window_.playlistMenu},
        {&programMenu_, &window_.programMenu},   {&programStart_, &window_.programStart},
        {&staticText1_, &window_.StaticText1},   {&staticText2_, &window_.StaticText2},
        {&staticText3_, &window_.StaticText3},   {&songDurationSlider_, &window_.songDurationSlider},
        {&songDuration_, &window_.songDuration},
    };
    for (const auto& [widget, control] : placed) Place(*widget, *control);
    for (QLabel* label : {&staticText1_, &staticText2_, &staticText3_}) {
        label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    }
    staticText1_.setBuddy(&programMenu_);
    staticText2_.setBuddy(&playlistMenu_);
    staticText3_.setBuddy(&songDurationSlider_);
    songDuration_.setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    resultField_.setReadOnly(window_.resultField.ReadOnly);
    resultField_.setTabChangesFocus(!window_.resultField.AcceptTabs);
    resultField_.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    resultField_.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
}

void WindowView::BindMenu(PopupMenu& menu, MenuBox& box, const char* name) {
    box.setObjectName(name);
    const auto show = [this, &menu, &box] {
        OnMainThread([&box, rows = menu.Rows(), index = menu.ListIndex(), enabled = menu.Enabled()] {
            const QSignalBlocker quiet(&box);
            if (static_cast<std::size_t>(box.count()) != rows.size()) {
                box.clear();
                for (const String& row : rows) box.addItem(ToQt(row));
            }
            box.setCurrentIndex(index);
            box.setEnabled(enabled);
        });
    };
    menu.Changed = show;
    show();
    connect(&box, &QComboBox::currentIndexChanged, this, [this, &menu](int index) {
        runtime_.Events().Post([&menu, index] { menu.SetListIndex(index); });
    });
}

void WindowView::BindButton() {
    programStart_.setObjectName("programStart");
    // In every style Space presses a button; people expect Enter to do so as well.
    programStart_.setAutoDefault(true);
    const auto show = [this] {
        OnMainThread(
            [this, caption = window_.programStart.Caption(), enabled = window_.programStart.Enabled()] {
                programStart_.setText(ToQt(caption));
                programStart_.setAccessibleName(ToQt(caption));
                programStart_.setEnabled(enabled);
            });
    };
    window_.programStart.Changed = show;
    show();
    connect(&programStart_, &QPushButton::clicked, this,
            [this] { runtime_.Events().Post([this] { window_.programStart.Push(); }); });
}

void WindowView::BindSlider() {
    Slider& slider = window_.songDurationSlider;
    songDurationSlider_.setObjectName("songDurationSlider");
    songDurationSlider_.setAccessibleName(NameFrom(window_.StaticText3.Text()));
    songDurationSlider_.setRange(slider.Minimum, slider.Maximum);
    songDurationSlider_.setSingleStep(slider.LineStep);
    songDurationSlider_.setPageStep(slider.PageStep);
    songDurationSlider_.setTracking(slider.LiveScroll);
    songDurationSlider_.setTickPosition(QSlider::NoTicks);
    const auto show = [this] {
        OnMainThread([this, value = window_.songDurationSlider.Value()] {
            const QSignalBlocker quiet(&songDurationSlider_);
            // During a drag the slider is ahead of the logic.
            if (!songDurationSlider_.isSliderDown()) songDurationSlider_.setValue(value);
        });
    };
    slider.Changed = show;
    show();
    connect(&songDurationSlider_, &QSlider::valueChanged, this, [this](int value) {
        runtime_.Events().Post([this, value] { window_.songDurationSlider.SetValue(value); });
    });
}

void WindowView::BindText(TextControl& text, std::function<void(const QString&)> show) {
    text.Changed = [this, &text, show] { OnMainThread([show, value = ToQt(text.Text())] { show(value); }); };
    show(ToQt(text.Text()));
}

void WindowView::OrderTabs() {
    std::array<std::pair<std::int32_t, QWidget*>, 5> stops{
        {{window_.resultField.TabIndex, &resultField_},
         {window_.playlistMenu.TabIndex, &playlistMenu_},
         {window_.programMenu.TabIndex, &programMenu_},
         {window_.programStart.TabIndex, &programStart_},
         {window_.songDurationSlider.TabIndex, &songDurationSlider_}}};
    std::sort(stops.begin(), stops.end());
    for (std::size_t i = 0; i + 1 < stops.size(); ++i) setTabOrder(stops[i].second, stops[i + 1].second);
    // The focus must not go to a control that can't be seen.
    for (const auto& [index, widget] : stops) {
        widget->setFocusPolicy(rect().intersects(widget->geometry()) ? Qt::StrongFocus : Qt::NoFocus);
    }
}

void WindowView::OnMainThread(std::function<void()> show) {
    if (QThread::currentThread() == thread()) {
        show();
    } else {
        QMetaObject::invokeMethod(this, std::move(show), Qt::QueuedConnection);
    }
}

void WindowView::Raise() {
    Q_ASSERT(QThread::currentThread() == thread());
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void WindowView::closeEvent(QCloseEvent* event) {
    event->accept();
    if (onClose) onClose();
}

}  // namespace sorakaze::window
