#pragma once

#include "host/toolkit/UI_ControlView.h"

namespace host {

enum class UI_Direction { Horizontal, Vertical };

/// A slider with a thumb. The user drags the thumb, clicks into the groove or uses the arrow keys.
/// UI thread.
class ZUHOST_API UI_Slider : public UI_InteractiveControlView {
public:
    /// With `isContinuous` every position can be reached, otherwise only whole numbers.
    UI_Slider(UI_Direction direction, bool isContinuous);
    ~UI_Slider() override;

    /// Both ends can be reached; `minimum` is the smaller one. The value is clamped to the new range.
    void SetRange(double minimum, double maximum);
    /// Sets the value, clamped to the range; does not call the change notifications.
    void SetValue(double value);
    /// Within the range; the range's minimum at first.
    double GetValue() const;
    /// Size of the thumb in view units.
    void SetThumbSize(float width, float height);
    /// A disabled slider shows its value, and the user cannot change it. Enabled by default.
    void Enable(bool enable);
};

}  // namespace host
