#pragma once

#include <QString>

namespace desk {

/// The application's style sheet in the colours of the current theme.
QString MakeStyleSheet();

}  // namespace desk
