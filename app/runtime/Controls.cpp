// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/runtime/Controls.h"

#include <algorithm>

#include "app/runtime/Runtime.h"

namespace sorakaze {

void RectControl::SetEnabled(bool enabled) {
    enabled_ = enabled;
    TellChanged();
}

void RectControl::TellChanged() const {
    AssertBaton();
    if (Changed) Changed();
}

void PushButton::SetCaption(const String& caption) {
    caption_ = caption;
    TellChanged();
}

void PushButton::Push() {
    if (Action) Action();
}

void PopupMenu::AddRow(const String& text) {
    rows_.push_back(text);
    TellChanged();
}

void PopupMenu::AddRows(const std::vector<String>& rows) {
    rows_.insert(rows_.end(), rows.begin(), rows.end());
    TellChanged();
}

void PopupMenu::SetListIndex(std::int32_t index) {
    listIndex_ = index;
    TellChanged();
}

String PopupMenu::Text() const {
    const bool selected = listIndex_ >= 0 && static_cast<std::size_t>(listIndex_) < rows_.size();
    return selected ? rows_[static_cast<std::size_t>(listIndex_)] : String();
}

void Slider::SetValue(std::int32_t value) {
    value = std::clamp(value, Minimum, Maximum);
    if (value == value_) return;
    value_ = value;
    TellChanged();
    if (ValueChanged) ValueChanged();
}

void TextControl::SetText(const String& text) {
    text_ = text;
    TellChanged();
}

void HTMLViewer::LoadPage(const FolderItemRef& file) {
    NotNil(file);
    if (Load) Load(file);
}

}  // namespace sorakaze
