#include "benchmarks/GivenNames.h"

#include <QSet>
#include <random>

namespace bench {

namespace {

constexpr int kShortest = 10;
constexpr int kLongest = 60;

const char* const kWords[] = {
    "Interview",  "kitchen",      "Rough Cut", "FINAL",     "final_final", "Sequence",    "B-Roll",
    "night",      "Exterior",     "Müller",    "Zoë",       "Ålesund",     "café",        "Łódź",
    "東京",       "Čapek",        "naïve",     "Straße",    "München",     "Episode",     "teaser",
    "Trailer",    "mix",          "GRADE",     "offline",   "Online",      "Day",         "Take",
    "reel",       "Schnitt",      "montage",   "São Paulo", "pickups",     "Act",         "SYNC",
    "do not use", "client notes", "selects",   "Wide",      "drone",       "Anna & Tom",  "(new)",
    "approved",   "Archiv",       "Ελλάδα",    "archive",   "Bauchbinde",  "lower thirds"};
const char* const kSigns[] = {" ", " ", " ", " ", "_", "_", "-", " - ", "."};

/// What two names must differ in.
QString Canonical(const QString& name) {
    QString canonical;
    for (const QChar c : name.toLower()) {
        const bool isLeadingZero =
            c == QLatin1Char('0') && (canonical.isEmpty() || !canonical.back().isDigit());
        if (!isLeadingZero) canonical += c;
    }
    return canonical;
}

class Giver {
public:
    QString Next(int index) {
        QString base = Pick(kWords);
        const int length = kShortest + static_cast<int>(mRandom() % 25);
        while (base.size() < length) base += Pick(kSigns) + (mRandom() % 4 == 0 ? Number() : Pick(kWords));
        base = base.left(kLongest - 24);
        if (index % 100 == 0) base += Case(index, QStringLiteral(" kestrel"));
        if (index % 200 == 0) base += Case(index / 200, QStringLiteral(" blue"));
        QString name = base;
        while (mGiven.contains(Canonical(name))) name = base + QLatin1Char(' ') + Number();
        mGiven.insert(Canonical(name));
        return name;
    }

private:
    template <std::size_t count>
    QString Pick(const char* const (&texts)[count]) {
        return QString::fromUtf8(texts[mRandom() % count]);
    }
    QString Number() {
        const auto number = static_cast<unsigned>(mRandom());
        switch (number % 4) {
            case 0:
                return QStringLiteral("v%1").arg(number / 4 % 30 + 1);
            case 1:
                return QStringLiteral("%1").arg(number / 4 % 1000, 3, 10, QLatin1Char('0'));
            case 2:
                return QStringLiteral("2025-%1-%2").arg(number / 4 % 12 + 1).arg(number / 48 % 28 + 1);
            default:
                return QString::number(number / 4 % 100'000);
        }
    }
    static QString Case(int index, const QString& text) { return index % 3 == 0 ? text.toUpper() : text; }

    std::mt19937 mRandom{1};
    QSet<QString> mGiven;
};

}  // namespace

std::vector<QString> MakeGivenNames(int count) {
    Giver giver;
    std::vector<QString> names;
    names.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) names.push_back(giver.Next(i));
    return names;
}

}  // namespace bench
