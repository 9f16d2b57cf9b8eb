#pragma once

#include <functional>

#include "host/core/Export.h"

namespace desk {

/// How the panels of the window follow each other; the workspace sets it. UI thread.
struct ZUHOST_API PanelNavigation {
    /// Puts the next (`forward`) or the previous panel on duty; false when there is no other.
    std::function<bool(bool forward)> mSelectPanel;
    /// True when there is a panel to go to.
    std::function<bool()> mCanSelectPanel;

    bool Select(bool forward) const { return mSelectPanel && mSelectPanel(forward); }
    bool CanSelect() const { return mCanSelectPanel && mCanSelectPanel(); }

    static PanelNavigation& Instance();
};

}  // namespace desk
