#pragma once

#include "desk/toolkit/NodeImpl.h"
#include "desk/toolkit/ShapedText.h"
#include "host/toolkit/UI_ControlView.h"
#include "host/toolkit/UI_Slider.h"
#include "host/toolkit/UI_StaticImage.h"
#include "host/toolkit/UI_StaticText.h"

class QSlider;

namespace desk {

/// Property of widgets whose tool tip comes after a time of their own, in milliseconds.
inline constexpr char kToolTipDelayProperty[] = "toolTipDelay";

/// `text` as a tool tip: shown as it stands, whatever markup it seems to hold.
ZUHOST_API QString ToToolTip(const QString& text);

/// The desktop's half of a control.
struct ControlImpl : host::UI_Node::Impl {
    void ApplyToWidget() override;
    void Notify(const host::UI_ChangeFunction& function);

    QString mToolTip;
    int mToolTipDelay = -1;
    host::UI_ChangeFunction mChanged;
    host::UI_ChangeFunction mChangedInteractively;
};

struct StaticTextImpl final : ControlImpl {
    explicit StaticTextImpl(host::UTF16String value);
    void SetValue(const host::UTF16String& value);
    void Paint(const LightPaint& paint) override;
    double NaturalWidth() override { return mShaped.NaturalWidth(Font()); }
    QWidget* CreateWidget(QWidget& parent) override;
    void ApplyToWidget() override;
    const TextFont& Font() const { return GetTextFont(double(mFontSize), mStyle == "Italic"); }

    host::UTF16String mValue;
    std::string mStyle;
    float mFontSize = 0;
    host::UI_Alignment mAlignment = host::UI_Alignment::Left;
    ShapedText mShaped;
};

struct StaticImageImpl final : ControlImpl {
    void Paint(const LightPaint& paint) override;
    double NaturalWidth() override { return double(mBounds.width); }
    QWidget* CreateWidget(QWidget& parent) override { return new NodeWidget(*this, &parent); }

    host::UI_StaticImage::SupplyFunction mSupply;
};

struct SliderImpl final : ControlImpl {
    QWidget* CreateWidget(QWidget& parent) override;
    void ApplyToWidget() override;
    /// The user has moved the thumb to `position` of the widget.
    void Moved(int position);

    int ToPosition(double value) const;
    double ToValue(int position) const;

    host::UI_Direction mDirection = host::UI_Direction::Horizontal;
    bool mIsContinuous = true;
    bool mIsEnabled = true;
    double mMinimum = 0;
    double mMaximum = 1;
    double mValue = 0;
    float mThumbWidth = 12;
    float mThumbHeight = 12;
};

}  // namespace desk
