#pragma once

#include <QFont>
#include <QFontMetricsF>
#include <QStaticText>
#include <QString>
#include <string_view>

#include "host/toolkit/UI_StaticText.h"

class QPainter;

namespace desk {

/// A font of the user interface with its metrics.
struct TextFont {
    QFont mFont;
    QFontMetricsF mMetrics;
};

/// The application's font at a height in view units (0: its own), upright or italic; kept.
const TextFont& GetTextFont(double height, bool italic);
/// Forgets all fonts and shaped texts; called when the application's font has changed.
void ClearTextCaches();

/// A line of text that is shaped once and painted often; cut with an ellipsis to a width.
class ShapedText {
public:
    /// `text` is plain and safe to show (`ToDisplayText`).
    void SetText(QString text);
    const QString& GetText() const { return mText; }
    /// Paints vertically centred in `rect`, with the painter's pen; shapes first what was not shaped yet.
    void Draw(QPainter& painter, const QRectF& rect, const TextFont& font, host::UI_Alignment alignment);
    double NaturalWidth(const TextFont& font);

private:
    void Shape(const TextFont& font, double width);

    QString mText;
    QStaticText mShaped;
    QFont mShapedFont;
    double mNaturalWidth = -1;
    double mShapedForWidth = -1;
    bool mIsCut = false;
    unsigned mGeneration = 0;
};

/// Paints a line of text as `ShapedText` does. The shaped texts of cells painted lately are kept.
/// Returns the width that the whole text needs.
double DrawCachedText(QPainter* painter, std::u16string_view text, const QRectF& rect, double fontHeight,
                      host::UI_Alignment alignment);

}  // namespace desk
