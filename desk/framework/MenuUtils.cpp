#include "host/framework/MenuUtils.h"

#include <QWidget>

#include "desk/core/log/Log.h"
#include "desk/framework/MenuResources.h"
#include "desk/toolkit/NodeImpl.h"

namespace host {

Menu Menu::Load(std::string_view menuID) {
    if (desk::MenuResources::Instance().HasMenu(menuID)) return Menu(menuID);
    desk::Log(desk::LogLevel::Warning, "There is no menu \"" + std::string(menuID) + '"');
    return {};
}

void MenuUtils::TrackContextMenu(const Menu& menu, UI_Node& node, Point point) {
    QWidget* const widget = node.GetImpl().mWidget;
    if (!menu.IsValid() || !widget || !widget->isVisible()) return;
    const QPoint screen = widget->mapToGlobal(QPoint(point.x, point.y));
    desk::MenuResources::Instance().Track(menu.GetID(), *widget, screen.x(), screen.y());
}

}  // namespace host
