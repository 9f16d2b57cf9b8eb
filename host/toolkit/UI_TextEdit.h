#pragma once

#include "host/toolkit/SharedFunction.h"
#include "host/toolkit/UI_ControlView.h"

namespace host {

/// How an editing session ended: what was typed counts, or it does not.
inline constexpr int kEditEnd_Committed = 0;
inline constexpr int kEditEnd_Cancelled = 1;

/// A field for one line of text, with undo, the clipboard, input methods and every script. Shortcuts of
/// commands do nothing while it has the keyboard.
///
/// A session lasts from when the field gets the keyboard until it ends, once:
/// - committed by Return, Enter, Tab, Ctrl+Tab and F6 (the last three take the keyboard on), and when it loses
///   the keyboard, but for its own context menu;
/// - cancelled by Escape, and by whoever shows the field (`UI_CellEditor`).
///
/// A field in a container begins another session when it gets the keyboard again. UI thread.
class ZUHOST_API UI_TextEdit : public UI_ControlView {
public:
    UI_TextEdit();
    ~UI_TextEdit() override;

    /// The text as it stands, whether committed or not: neither trimmed nor normalised, and a line break that
    /// was pasted is in it.
    UTF16String GetValue() const;
    /// Sets the text, all of it selected, with nothing to undo.
    void SetValue(const UTF16String& value);
    /// Selects `count` UTF-16 units from `first` on, as far as there are so many: the name without its
    /// extension, for example.
    void SelectPart(std::size_t first, std::size_t count);
    /// Height of the font in view units (pixel size); 0, the default, is the theme's own.
    void SetFontSize(float size);
    /// What the field is for, for assistive technology; plain, localised.
    void SetAccessibleName(const UTF16String& name);

    /// Called when a session has ended, with `kEditEnd_Committed` or `kEditEnd_Cancelled`: later in the same
    /// turn of the event loop, when the field has left the screen or the keyboard. Not called for a field that
    /// is destroyed during a session.
    void NotifyWhenEditEnds(SharedFunction<void(UI_TextEdit& edit, int sessionEnd)> function);
};

}  // namespace host
