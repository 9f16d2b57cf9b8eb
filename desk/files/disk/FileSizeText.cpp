#include <QLocale>
#include <array>
#include <cmath>
#include <string_view>

#include "desk/core/names/QtStrings.h"
#include "host/core/Localizer.h"
#include "host/files/File.h"

namespace host {

namespace {

constexpr std::array<std::string_view, 6> kUnits = {
    "$$$/Vantor/Desk/Files/Size/Kilobytes=@0 KB", "$$$/Vantor/Desk/Files/Size/Megabytes=@0 MB",
    "$$$/Vantor/Desk/Files/Size/Gigabytes=@0 GB", "$$$/Vantor/Desk/Files/Size/Terabytes=@0 TB",
    "$$$/Vantor/Desk/Files/Size/Petabytes=@0 PB", "$$$/Vantor/Desk/Files/Size/Exabytes=@0 EB",
};

/// The decimals with which `value` (below 1000) has three significant digits once it is rounded.
int CountDecimals(double value) {
    if (value < 9.995) return 2;
    return value < 99.95 ? 1 : 0;
}

}  // namespace

UTF16String GetDisplayStringOfFileSize(unsigned long long bytes) {
    if (bytes == 1) return ZString("$$$/Vantor/Desk/Files/Size/Byte=1 byte");
    const QLocale locale;
    if (bytes < 1000)
        return ZString("$$$/Vantor/Desk/Files/Size/Bytes=@0 bytes", {desk::ToUTF16(locale.toString(bytes))});
    double value = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    for (; value >= 999.5 && unit + 1 < kUnits.size(); ++unit) value /= 1000;
    return ZString(kUnits[unit], {desk::ToUTF16(locale.toString(value, 'f', CountDecimals(value)))});
}

}  // namespace host
