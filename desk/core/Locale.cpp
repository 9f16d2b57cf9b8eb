#include "host/core/Locale.h"

#include <stdexcept>

#include "desk/core/Log.h"

namespace host {

const std::locale& Locale::Native() {
    static const std::locale native = [] {
        try {
            return std::locale("");
        } catch (const std::runtime_error&) {
            desk::Log(desk::LogLevel::Info,
                      "The system's locale is unknown to the C++ library; the classic one is used");
            return std::locale::classic();
        }
    }();
    return native;
}

}  // namespace host
