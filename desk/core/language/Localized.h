#pragma once

#include <QString>
#include <initializer_list>
#include <string_view>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// The text of a localisation key, as `host::ZString` gives it, for Qt. UI thread.
ZUHOST_API QString Localized(std::string_view key, std::initializer_list<host::UTF16String> arguments = {});

}  // namespace desk
