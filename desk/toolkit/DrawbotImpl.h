#pragma once

#include <QColor>

#include "host/toolkit/Drawbot.h"

class QPainter;

/// The desktop's half of a drawbot: paints, or without a painter only measures.
struct host::Drawbot::Impl {
    QPainter* mPainter = nullptr;
    QColor mTextColor;
    /// Width of what was drawn if nothing were cut, with the margins of the cell.
    double mNaturalWidth = 0;
};
