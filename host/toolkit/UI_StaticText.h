#pragma once

#include "host/toolkit/UI_ControlView.h"

namespace host {

enum class UI_Alignment { Left, Centre, Right };

/// A line of plain text, vertically centred and cut with an ellipsis where it does not fit. Characters
/// that would change the line or its direction are shown escaped. UI thread.
class ZUHOST_API UI_StaticText : public UI_ControlView {
public:
    explicit UI_StaticText(UTF16String value = {});
    ~UI_StaticText() override;

    /// The text as it was given, unescaped; empty shows nothing.
    void SetValue(const UTF16String& value);
    const UTF16String& GetValue() const;
    /// Where the text stands in a wider rectangle; left by default.
    void SetAlignment(UI_Alignment alignment);
    /// Height of the font in view units (pixel size); 0, the default, is the theme's own.
    void SetFontSize(float size);
    /// "Italic" or "" (upright, the default).
    void SetFontStyle(std::string_view style);
    const std::string& GetFontStyle() const;
};

}  // namespace host
