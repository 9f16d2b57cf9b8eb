#include "desk/core/language/Localized.h"

#include "desk/core/names/QtStrings.h"
#include "host/core/Localizer.h"

namespace desk {

QString Localized(std::string_view key, std::initializer_list<host::UTF16String> arguments) {
    return ToQString(host::ZString(key, arguments));
}

}  // namespace desk
