#include <gtest/gtest.h>

#include <QLocale>
#include <limits>

#include "host/files/File.h"

namespace {

/// Sets Qt's locale as long as it exists.
class LocaleOfTest {
public:
    explicit LocaleOfTest(const char* name) { QLocale::setDefault(QLocale(QLatin1String(name))); }
    ~LocaleOfTest() { QLocale::setDefault(mBefore); }

private:
    QLocale mBefore;
};

std::string Text(unsigned long long bytes) {
    return host::UTF16to8(host::GetDisplayStringOfFileSize(bytes));
}

}  // namespace

TEST(FileSizeText, HasThreeSignificantDigitsInUnitsOfThousand) {
    const LocaleOfTest english("en_US");
    const std::pair<unsigned long long, const char*> cases[] = {
        {0, "0 bytes"},
        {1, "1 byte"},
        {512, "512 bytes"},
        {999, "999 bytes"},
        {1000, "1.00 KB"},
        {1005, "1.00 KB"},
        {9'994, "9.99 KB"},
        {9'996, "10.0 KB"},
        {99'949, "99.9 KB"},
        {99'951, "100 KB"},
        {212'000, "212 KB"},
        {999'499, "999 KB"},
        {999'500, "1.00 MB"},
        {4'180'000, "4.18 MB"},
        {11'600'000, "11.6 MB"},
        {2'500'000'000, "2.50 GB"},
        {999'999'999'999, "1.00 TB"},
        {std::numeric_limits<unsigned long long>::max(), "18.4 EB"},
    };
    for (const auto& [bytes, expected] : cases) EXPECT_EQ(Text(bytes), expected) << bytes;
}

TEST(FileSizeText, FollowsTheUsersLocale) {
    const LocaleOfTest german("de_DE");
    EXPECT_EQ(Text(4'180'000), "4,18 MB");
}
