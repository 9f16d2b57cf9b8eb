#pragma once

#include <QJsonObject>

#include "desk/framework/Shortcuts.h"

namespace desk {

/// Adds the keys of a shortcut file's object to `bindings`, in place of what stands there for the same
/// commands. What is not understood is logged with `fileName` and left out.
void ReadKeyBindings(const QJsonObject& file, const std::string& fileName, KeyBindings& bindings);

}  // namespace desk
