// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
// The controls of a window as the logic sees them: plain objects with properties and events. A host may
// attach a view to each, which is notified of every change. Only with the baton.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "app/runtime/FolderItem.h"
#include "app/runtime/String.h"

namespace sorakaze {

class Window;

/// What every visible control has. Coordinates are pixels from the top left corner of the window's content.
class RectControl {
  public:
    std::int32_t Left = 0;
    std::int32_t Top = 0;
    std::int32_t Width = 0;
    std::int32_t Height = 0;
    bool LockLeft = true;
    bool LockTop = true;
    bool LockRight = false;
    bool LockBottom = false;
    std::int32_t TabPanelIndex = 0;
    std::int32_t TabIndex = 0;
    bool Visible = true;
    bool AutoDeactivate = true;
    String HelpTag;
    String TextFont;
    double TextSize = 0;  ///< 0: the default
    std::int32_t TextUnit = 0;
    bool Bold = false;
    bool Italic = false;
    bool Underline = false;

    bool Enabled() const { return enabled_; }
    void SetEnabled(bool enabled);

    /// For the view: called after any property has changed.
    std::function<void()> Changed;

  protected:
    void TellChanged() const;

  private:
    bool enabled_ = true;
};

class PushButton : public RectControl {
  public:
    bool TabStop = true;
    bool Default = false;
    bool Cancel = false;
    std::int32_t ButtonStyle = 0;

    const String& Caption() const { return caption_; }
    void SetCaption(const String& caption);
    /// As if the user had pressed it.
    void Push();

    std::function<void()> Action;

  private:
    String caption_;
};

class PopupMenu : public RectControl {
  public:
    bool TabStop = true;

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
    bool TabStop = true;
    std::int32_t LineStep = 1;
    std::int32_t PageStep = 20;
    bool LiveScroll = false;
    std::int32_t TickStyle = 0;
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

class StaticText : public TextControl {
  public:
    static constexpr std::int32_t kAlignLeft = 0;
    static constexpr std::int32_t kAlignRight = 2;

    std::int32_t TextAlign = kAlignLeft;
    bool Multiline = false;
    bool Selectable = false;
    bool Transparent = false;
    std::uint32_t TextColor = 0x000000;
};

class TextArea : public TextControl {
  public:
    bool TabStop = true;
    bool Border = true;
    bool Multiline = true;
    bool ScrollbarHorizontal = false;
    bool ScrollbarVertical = true;
    bool Styled = true;
    bool UseFocusRing = true;
    std::uint32_t TextColor = 0x000000;
    std::uint32_t BackColor = 0xFFFFFF;
    String Format;
    String Mask;
    bool ReadOnly = false;
    std::int32_t LimitText = 0;
    bool AcceptTabs = false;
    std::int32_t Alignment = 0;
    bool HideSelection = true;
};

/// A place for pages. It stays empty until something is loaded.
class HTMLViewer : public RectControl {
  public:
    /// Loads and runs the page of a local file, scripts included, in place of what is there. Returns before
    /// it has finished. Raises NilObjectException for an empty reference. Without a view nothing happens.
    void LoadPage(const FolderItemRef& file);

    /// The standard edit commands, on what is selected in the page. Nothing happens without a view that
    /// edits.
    void EditClear() const { Edit(EditCommand::Clear); }
    void EditCopy() const { Edit(EditCommand::Copy); }
    void EditCut() const { Edit(EditCommand::Cut); }
    void EditPaste() const { Edit(EditCommand::Paste); }
    void EditSelectAll() const { Edit(EditCommand::SelectAll); }

    /// Handlers of menu commands, by the commands' names.
    std::map<std::string, std::function<void()>> MenuHandlers;

    /// For the view: called with the baton, on the thread that loads.
    std::function<void(const FolderItemRef&)> Load;
    /// For the view, likewise.
    enum class EditCommand { Clear, Copy, Cut, Paste, SelectAll };
    std::function<void(EditCommand)> OnEdit;

  private:
    void Edit(EditCommand command) const {
        if (OnEdit) OnEdit(command);
    }
};

/// A window's own properties.
class Window {
  public:
    String Title;
    std::int32_t Width = 0;
    std::int32_t Height = 0;
    std::int32_t MinWidth = 0;
    std::int32_t MinHeight = 0;
    std::int32_t MaxWidth = 0;
    std::int32_t MaxHeight = 0;
    std::int32_t Placement = 0;
    std::int32_t Frame = 0;
    bool Resizeable = true;
    bool LiveResize = true;
    bool CloseButton = true;
    bool MinimizeButton = true;
    bool MaximizeButton = true;
    bool Visible = true;
    bool FullScreen = false;
    bool MenuBarVisible = true;
    bool Composite = false;
    bool HasBackColor = false;
    std::uint32_t BackColor = 0xFFFFFF;
    std::int32_t MacProcID = 0;
};

// NOLINTBEGIN(bugprone-reserved-identifier)
/// A thread or a timer that sits on a window as a named control.
template <typename Base>
class OnWindow : public Base {
  public:
    std::int32_t Index = 0;

    void Constructor(sorakaze::Window* window) { _SetWindow(window); }
    void _SetWindow(sorakaze::Window* window) { ownerWindow = window; }
    sorakaze::Window* Window() const { return ownerWindow; }
    std::int32_t _Index() const { return Index; }
    void _SetIndex(std::int32_t index) { Index = index; }

  private:
    sorakaze::Window* ownerWindow = nullptr;
};
// NOLINTEND(bugprone-reserved-identifier)

}  // namespace sorakaze
