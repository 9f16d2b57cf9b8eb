#include <gtest/gtest.h>

#include <QtWidgets>
#include <ctime>
#include <sstream>

#include "desk/core/language/DateLanguage.h"
#include "host/core/Locale.h"
#include "tests/support/TemporaryFolder.h"

namespace {

/// A day in March and a number, as the panel shows them.
std::wstring Shown() {
    std::tm day{};
    day.tm_mon = 2;
    std::wostringstream stream;
    stream.imbue(host::Locale::Native());
    std::use_facet<std::time_put<wchar_t>>(stream.getloc())
        .put(std::ostreambuf_iterator<wchar_t>(stream), stream, L' ', &day, 'B');
    stream << L' ' << 1.5;
    return stream.str();
}

TEST(DateLanguage, IsTheChosenOneWhereTheSystemHasItAndLeavesNumbers) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the C library never frees what it reads of LOCPATH";
#endif
    const TemporaryFolder locales;
    const QString german = QString::fromStdString(locales.Path("de_DE.UTF-8"));
    const QStringList arguments = {QStringLiteral("-i"), QStringLiteral("de_DE"), QStringLiteral("-f"),
                                   QStringLiteral("UTF-8"), german};
    if (QProcess::execute(QStringLiteral("localedef"), arguments) != 0) GTEST_SKIP() << "no localedef";
    const std::wstring before = Shown();
    qputenv("LOCPATH", locales.Path().c_str());
    desk::SetDateLanguage("fr");
    EXPECT_EQ(Shown(), before) << "the system has no such locale";
    desk::SetDateLanguage("de");
    EXPECT_EQ(Shown(), L"März 1.5");
    EXPECT_EQ(QLocale().monthName(3), QStringLiteral("März"));
    qunsetenv("LOCPATH");
    desk::SetDateLanguage("");
    EXPECT_EQ(Shown(), before);
    EXPECT_EQ(QLocale(), QLocale::system());
}

}  // namespace
