#include "host/framework/ColorManager.h"

#include "desk/toolkit/Theme.h"

namespace host {

Color ColorManager::GetColor(std::string_view) {
    const QColor color = desk::Theme::Color(desk::ThemeColor::WindowBackground);
    const auto channel = [](int value) { return static_cast<unsigned char>(value); };
    return {channel(color.red()), channel(color.green()), channel(color.blue())};
}

}  // namespace host
