#pragma once

#include <QColor>
#include <QPixmap>
#include <QString>
#include <string_view>

#include "host/core/Export.h"

namespace desk {

enum class ThemeKind { Dark, Light };

/// Roles of colours beyond the palette's.
enum class ThemeColor {
    WindowBackground,
    PanelBackground,
    TreeBackground,
    HeaderBackground,
    Line,
    Text,
    SecondaryText,
    DisabledText,
    Accent,
    Selection,
    SelectionText,
    FolderIcon,
    IconStroke,
    LockedIcon,
    EditableIcon,
    FieldBackground
};

/// The look: colours, font, style sheet and pictures. UI thread.
class ZUHOST_API Theme {
public:
    /// Sets palette, font and style sheet of the application, and announces it to all widgets. Can be called
    /// again at run time.
    static void Apply(ThemeKind kind);
    static ThemeKind CurrentKind();
    static QColor Color(ThemeColor color);
    /// A picture by its resource name (":/pictures/<name>.svg", colours by role), rendered sharp at
    /// `size` x `size` view units and the given device pixel ratio; cached. Null pixmap for an unknown name.
    static QPixmap Picture(std::string_view name, qreal size, qreal devicePixelRatio, bool enabled = true);
};

/// `text` made safe to show as one line of plain text: control and bidirectional formatting characters,
/// line separators and units that stand for raw bytes become visible escapes ("\n", "\u202E", "\xE9"), and so
/// do spaces where there is nothing else. What isolates a name in a sentence (`Isolate`) stays.
ZUHOST_API QString ToDisplayText(std::u16string_view text);

}  // namespace desk
