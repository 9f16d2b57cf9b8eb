#include "host/core/Locale.h"

#include <QLocale>
#include <atomic>
#include <cstdlib>
#include <stdexcept>

#include "desk/core/language/DateLanguage.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"

namespace desk {
namespace {

std::locale FindSystemLocale() {
    try {
        return std::locale("");
    } catch (const std::runtime_error&) {
        Log(LogLevel::Info, "The system's locale is unknown to the C++ library; the classic one is used");
        return std::locale::classic();
    }
}

const std::locale& SystemLocale() {
    static const std::locale& system = *new std::locale(FindSystemLocale());
    return system;
}

std::atomic<const std::locale*> sNative = nullptr;

/// The name of the locale whose dates the system is set to (POSIX, "Environment Variables").
std::string SystemDateLocale() {
    for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"})
        if (const char* value = std::getenv(variable); value && *value) return value;
    return "C";
}

/// The language of dates in a locale of that name. The C locale's are English.
QLocale::Language LanguageOf(const std::string& locale) {
    const QLocale::Language language = QLocale(ToQStringFromUTF8(locale)).language();
    return language == QLocale::C ? QLocale::English : language;
}

/// Not destroyed: others may hold on to it.
const std::locale& WithDatesOf(const std::locale& base, const std::string& name) {
    try {
        return *new std::locale(base, name, std::locale::time);
    } catch (const std::runtime_error&) {
        Log(LogLevel::Info, "The system has no locale " + name + "; dates stay as they are");
        return base;
    }
}

}  // namespace

void SetDateLanguage(const std::string& language) {
    const QLocale wanted(ToQStringFromUTF8(language));
    const bool isSystems = language.empty() || LanguageOf(SystemDateLocale()) == LanguageOf(language);
    QLocale::setDefault(isSystems ? QLocale::system() : wanted);
    sNative = isSystems ? &SystemLocale() : &WithDatesOf(SystemLocale(), ToUTF8(wanted.name()) + ".UTF-8");
}

}  // namespace desk

namespace host {

const std::locale& Locale::Native() {
    const std::locale* native = desk::sNative;
    return native ? *native : desk::SystemLocale();
}

}  // namespace host
