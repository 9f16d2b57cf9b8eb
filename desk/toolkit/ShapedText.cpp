#include "desk/toolkit/ShapedText.h"

#include <QApplication>
#include <QCache>
#include <QHash>
#include <QPainter>
#include <cmath>
#include <map>

#include "desk/toolkit/Theme.h"

namespace desk {

namespace {

unsigned fontGeneration = 1;

std::map<std::pair<int, bool>, TextFont>& Fonts() {
    static std::map<std::pair<int, bool>, TextFont> fonts;
    return fonts;
}

struct CachedTextKey {
    std::u16string mText;
    int mFontHeight;
    int mWidth;
    friend bool operator==(const CachedTextKey&, const CachedTextKey&) = default;
};

size_t qHash(const CachedTextKey& key, size_t seed) {
    return qHashMulti(seed, QStringView(key.mText.data(), qsizetype(key.mText.size())), key.mFontHeight,
                      key.mWidth);
}

QCache<CachedTextKey, ShapedText>& Texts() {
    static QCache<CachedTextKey, ShapedText> texts(2000);
    return texts;
}

}  // namespace

const TextFont& GetTextFont(double height, bool italic) {
    const int pixels = height > 0 ? std::max(1, int(std::lround(height))) : 0;
    const auto found = Fonts().find({pixels, italic});
    if (found != Fonts().end()) return found->second;
    QFont font = QApplication::font();
    if (pixels > 0) font.setPixelSize(pixels);
    font.setItalic(italic);
    return Fonts().emplace(std::pair(pixels, italic), TextFont{font, QFontMetricsF(font)}).first->second;
}

void ClearTextCaches() {
    Fonts().clear();
    Texts().clear();
    ++fontGeneration;
}

void ShapedText::SetText(QString text) {
    mText = std::move(text);
    mGeneration = 0;
}

void ShapedText::Shape(const TextFont& font, double width) {
    if (mGeneration != fontGeneration || mShapedFont != font.mFont) {
        mGeneration = fontGeneration;
        mShapedFont = font.mFont;
        mShaped.setTextFormat(Qt::PlainText);
        mShaped.setText(mText);
        mShaped.prepare({}, font.mFont);
        mNaturalWidth = mShaped.size().width();
        mIsCut = false;
    } else if (width == mShapedForWidth || (!mIsCut && mNaturalWidth <= width)) {
        return;
    }
    mShapedForWidth = width;
    const bool fits = mNaturalWidth <= width;
    if (fits && !mIsCut) return;
    mIsCut = !fits;
    mShaped.setText(fits ? mText : font.mMetrics.elidedText(mText, Qt::ElideRight, width));
    mShaped.prepare({}, font.mFont);
}

double ShapedText::NaturalWidth(const TextFont& font) {
    if (mGeneration != fontGeneration || mShapedFont != font.mFont) Shape(font, 1e6);
    return std::ceil(mNaturalWidth);
}

void ShapedText::Draw(QPainter& painter, const QRectF& rect, const TextFont& font,
                      host::UI_Alignment alignment) {
    if (mText.isEmpty() || rect.width() <= 0) return;
    Shape(font, rect.width());
    double x = rect.x();
    const double spare = rect.width() - mShaped.size().width();
    if (alignment == host::UI_Alignment::Right) x += spare;
    if (alignment == host::UI_Alignment::Centre) x += spare / 2;
    const double y = rect.y() + (rect.height() - mShaped.size().height()) / 2;
    painter.setFont(font.mFont);
    painter.drawStaticText(QPointF(std::round(x), std::round(y)), mShaped);
}

double DrawCachedText(QPainter* painter, std::u16string_view text, const QRectF& rect, double fontHeight,
                      host::UI_Alignment alignment) {
    if (text.empty()) return 0;
    const TextFont& font = GetTextFont(fontHeight, false);
    const CachedTextKey key{std::u16string(text), int(std::lround(fontHeight)), int(rect.width())};
    ShapedText* shaped = Texts().object(key);
    if (!shaped) {
        shaped = new ShapedText;
        shaped->SetText(ToDisplayText(text));
        Texts().insert(key, shaped);
    }
    if (painter) shaped->Draw(*painter, rect, font, alignment);
    return shaped->NaturalWidth(font);
}

}  // namespace desk
