#include <QStringView>
#include <algorithm>

#include "desk/core/names/Isolation.h"
#include "desk/toolkit/Theme.h"

namespace desk {

namespace {

bool IsBidirectionalFormat(char16_t unit) {
    return unit == 0x061C || unit == 0x200E || unit == 0x200F || (unit >= 0x202A && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

bool IsControl(char16_t unit) {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029 || unit == 0xFEFF;
}

QString Escape(char16_t unit) {
    switch (unit) {
        case u'\n':
            return QStringLiteral("\\n");
        case u'\r':
            return QStringLiteral("\\r");
        case u'\t':
            return QStringLiteral("\\t");
        default:
            break;
    }
    const QString digits = QString::number(unit, 16).toUpper();
    // A lone unit in U+DC80..U+DCFF stands for a byte of a file name.
    if (unit >= 0xDC80 && unit <= 0xDCFF) return QStringLiteral("\\x") + digits.right(2);
    return QStringLiteral("\\u") + digits.rightJustified(4, u'0');
}

/// A text of spaces alone would look as if there were none.
bool IsBlank(std::u16string_view text) {
    return std::ranges::all_of(text, [](char16_t unit) { return QChar::isSpace(unit); });
}

}  // namespace

QString ToDisplayText(std::u16string_view text) {
    const bool isBlank = IsBlank(text);
    QString shown;
    shown.reserve(qsizetype(text.size()));
    std::size_t endOfIsolate = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (const std::size_t isolate = FindIsolate(text.substr(i))) endOfIsolate = i + isolate - 1;
        const bool isIsolating = endOfIsolate > 0 && (i == endOfIsolate || unit == u'\u2068');
        if (isIsolating) {
            shown += QChar(unit);
        } else if (QChar::isHighSurrogate(unit) && i + 1 < text.size() && QChar::isLowSurrogate(text[i + 1])) {
            shown += QChar(unit);
            shown += QChar(text[++i]);
        } else if (isBlank || IsControl(unit) || IsBidirectionalFormat(unit) || QChar::isSurrogate(unit)) {
            shown += Escape(unit);
        } else {
            shown += QChar(unit);
        }
    }
    return shown;
}

}  // namespace desk
