#pragma once

#include <string>

#include "host/core/Export.h"

namespace desk {

/// Has dates in `language` ("de", "de_AT") from now on: those of Qt's default locale, and those of
/// `host::Locale::Native` where the system has such a locale. What the system is set to stays when it is of
/// that language, whatever its country; so do numbers in `Native`. Empty: as the system is set. Does not touch
/// the process's environment, nor the C library's locale. UI thread, before dates are shown.
ZUHOST_API void SetDateLanguage(const std::string& language);

}  // namespace desk
