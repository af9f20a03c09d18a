// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The controls of a window as the logic sees them: plain objects with properties and events. A host may
// attach a view to each, which is told of every change. For the baton's holder.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "app/runtime/String.h"

namespace sorakaze {

class RectControl {
  public:
    bool Enabled() const { return enabled_; }
    void SetEnabled(bool enabled);

    /// Called after any property has changed; the view's place.
    std::function<void()> Changed;

  protected:
    void TellChanged() const;

  private:
    bool enabled_ = true;
};

class PushButton : public RectControl {
  public:
    const String& Caption() const { return caption_; }
    void SetCaption(const String& caption);
    /// As if the user pressed it.
    void Push();

    std::function<void()> Action;

  private:
    String caption_;
};

class PopupMenu : public RectControl {
  public:
    void AddRow(const String& text);
    void AddRows(const std::vector<String>& rows);
    const std::vector<String>& Rows() const { return rows_; }
    std::int32_t ListIndex() const { return listIndex_; }
    void SetListIndex(std::int32_t index);
    /// The selected row's text; empty if there is no such row.
    String Text() const;

  private:
    std::vector<String> rows_;
    std::int32_t listIndex_ = 0;
};

class Slider : public RectControl {
  public:
    std::int32_t Minimum = 0;
    std::int32_t Maximum = 100;

    std::int32_t Value() const { return value_; }
    /// Kept within Minimum and Maximum. Fires ValueChanged if the value is another.
    void SetValue(std::int32_t value);

    std::function<void()> ValueChanged;

  private:
    std::int32_t value_ = 0;
};

/// StaticText and TextArea: a text that the logic sets.
class TextControl : public RectControl {
  public:
    const String& Text() const { return text_; }
    void SetText(const String& text);

  private:
    String text_;
};

class StaticText : public TextControl {};
class TextArea : public TextControl {};

}  // namespace sorakaze
