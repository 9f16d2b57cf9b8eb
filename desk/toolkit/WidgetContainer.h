#pragma once

#include "host/core/Export.h"
#include "host/toolkit/UI_Node.h"

class QWidget;

namespace desk {

/// Makes a container that fills `widget` and gives the nodes added to it (and to containers in it) widgets of
/// their own inside `widget`: labels, sliders, trees. `widget` outlives it or is destroyed with its nodes'
/// widgets; both orders are safe. UI thread.
ZUHOST_API host::RefPtr<host::UI_Container> CreateWidgetContainer(QWidget& widget);

/// The widget behind a node, or null when it is a light one.
ZUHOST_API QWidget* GetNodeWidget(const host::UI_Node& node);

}  // namespace desk
