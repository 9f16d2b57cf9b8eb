#include <gtest/gtest.h>

#include <QLocale>
#include <limits>

#include "host/files/File.h"

namespace {

std::string Text(unsigned long long bytes) {
    return host::UTF16to8(host::GetDisplayStringOfFileSize(bytes));
}

}  // namespace

TEST(FileSizeText, HasThreeSignificantDigitsInUnitsOfThousandAndTheUsersPoint) {
    const QLocale before;
    QLocale::setDefault(QLocale(QStringLiteral("en_US")));
    const std::pair<unsigned long long, const char*> cases[] = {
        {0, "0 bytes"},
        {1, "1 byte"},
        {999, "999 bytes"},
        {1005, "1.00 KB"},
        {9'996, "10.0 KB"},
        {99'951, "100 KB"},
        {999'499, "999 KB"},
        {999'500, "1.00 MB"},
        {4'180'000, "4.18 MB"},
        {999'999'999'999, "1.00 TB"},
        {std::numeric_limits<unsigned long long>::max(), "18.4 EB"}};
    for (const auto& [bytes, expected] : cases) EXPECT_EQ(Text(bytes), expected) << bytes;
    QLocale::setDefault(QLocale(QStringLiteral("de_DE")));
    EXPECT_EQ(Text(4'180'000), "4,18 MB");
    QLocale::setDefault(before);
}
