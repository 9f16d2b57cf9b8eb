#pragma once

#include <locale>

#include "host/core/Export.h"

namespace host {

struct ZUHOST_API Locale {
    /// The user's locale as the system has it set; the classic one when the system's is unknown. Dates are
    /// those of the language that the user has chosen for the program, where the system has it. Any thread.
    static const std::locale& Native();
};

}  // namespace host
