#include "host/toolkit/UI_StaticText.h"

#include <QLabel>
#include <QPainter>

#include "desk/toolkit/ControlImpl.h"
#include "desk/toolkit/Theme.h"

namespace desk {

namespace {

/// Paints by way of the node, so that the text is cut where it does not fit; the label's own text is what
/// assistive technology reads.
class TextLabel : public QLabel {
public:
    TextLabel(StaticTextImpl& node, QWidget* parent) : QLabel(parent), mNode(&node) {
        setTextFormat(Qt::PlainText);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        mNode->Paint(
            {painter, Theme::Color(isEnabled() ? ThemeColor::SecondaryText : ThemeColor::DisabledText)});
    }
    QSize minimumSizeHint() const override { return {}; }

private:
    StaticTextImpl* mNode;
};

}  // namespace

StaticTextImpl::StaticTextImpl(host::UTF16String value) {
    SetValue(value);
}

void StaticTextImpl::SetValue(const host::UTF16String& value) {
    mValue = value;
    mShaped.SetText(ToDisplayText(mValue));
    if (mWidget) ApplyToWidget();
    ContentChanged();
}

void StaticTextImpl::Paint(const LightPaint& paint) {
    paint.mPainter.setPen(paint.mTextColor);
    mShaped.Draw(paint.mPainter, QRectF(0, 0, double(mBounds.width), double(mBounds.height)), Font(),
                 mAlignment);
}

QWidget* StaticTextImpl::CreateWidget(QWidget& parent) {
    return new TextLabel(*this, &parent);
}

void StaticTextImpl::ApplyToWidget() {
    ControlImpl::ApplyToWidget();
    static_cast<QLabel*>(mWidget.data())->setText(mShaped.GetText());
}

}  // namespace desk

namespace host {

namespace {
desk::StaticTextImpl& ImplOf(const UI_StaticText& text) {
    return static_cast<desk::StaticTextImpl&>(text.GetImpl());
}
}  // namespace

UI_StaticText::UI_StaticText(UTF16String value)
    : UI_ControlView(std::make_unique<desk::StaticTextImpl>(std::move(value))) {}
UI_StaticText::~UI_StaticText() = default;

void UI_StaticText::SetValue(const UTF16String& value) {
    if (value != ImplOf(*this).mValue) ImplOf(*this).SetValue(value);
}

const UTF16String& UI_StaticText::GetValue() const {
    return ImplOf(*this).mValue;
}

void UI_StaticText::SetAlignment(UI_Alignment alignment) {
    ImplOf(*this).mAlignment = alignment;
    ImplOf(*this).ContentChanged();
}

void UI_StaticText::SetFontSize(float size) {
    if (size == ImplOf(*this).mFontSize) return;
    ImplOf(*this).mFontSize = size;
    ImplOf(*this).ContentChanged();
}

void UI_StaticText::SetFontStyle(std::string_view style) {
    ImplOf(*this).mStyle = style;
    ImplOf(*this).ContentChanged();
}

const std::string& UI_StaticText::GetFontStyle() const {
    return ImplOf(*this).mStyle;
}

}  // namespace host
