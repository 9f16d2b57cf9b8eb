#pragma once

#include "host/core/Export.h"
#include "host/core/Geometry.h"
#include "host/framework/ColorManager.h"

namespace host {

/// What a view paints on, while it is being painted. UI thread.
class ZUHOST_API DC {
public:
    struct Impl;
    explicit DC(Impl& impl) : mImpl(&impl) {}

    /// Fills `rect` (in the view's own units); `alpha` 0 is transparent, 255 opaque.
    void FillRect(const Rect& rect, Color color, int alpha);

private:
    Impl* mImpl;
};

}  // namespace host
