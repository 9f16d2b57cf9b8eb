#pragma once

#include <string_view>

#include "host/core/Export.h"

namespace host {

/// A colour of the host's theme.
struct Color {
    unsigned char red = 0;
    unsigned char green = 0;
    unsigned char blue = 0;
    friend bool operator==(const Color&, const Color&) = default;
};

/// The colour names that panels use.
inline constexpr char kColor_WindowBackground[] = "kColor_WindowBackground";

/// UI thread.
struct ZUHOST_API ColorManager {
    /// The colour of that name in the current theme; unknown names give the window's background.
    static Color GetColor(std::string_view name);
};

}  // namespace host
