#include "desk/core/names/QtStrings.h"

namespace desk {

QString ToQString(std::u16string_view text) {
    return QString(reinterpret_cast<const QChar*>(text.data()), static_cast<qsizetype>(text.size()));
}

host::UTF16String ToUTF16(const QString& text) {
    return {reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())};
}

QString ToQStringFromUTF8(std::string_view utf8) {
    return ToQString(host::UTF8to16(utf8));
}

std::string ToUTF8(const QString& text) {
    return host::UTF16to8(
        {reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())});
}

QString ToWindowTitle(QString text) {
    return text.replace(QLatin1String("[*]"), QLatin1String("[*][*]"));
}

}  // namespace desk
