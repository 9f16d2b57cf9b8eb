#include <sys/stat.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <fstream>

#include "tests/ui/ProgramRun.h"

namespace {

/// The real program, closed, killed and started again on one profile.
class RememberedView : public ProgramRun {
protected:
    RememberedView() {
        SetVariable("QT_QPA_PLATFORM", "offscreen");
        for (const char* name :
             {"Harbour/Reels/Day 1/Shot 1.zuproj", "Harbour/Reel 1.zuproj", "North/Mix.zuproj"})
            mHome.Write(name, "a");
    }

    static QString PathOf(const std::string& path) { return QString::fromStdString(path); }
    QJsonObject Settings() const {
        const std::string bytes = mHome.Read(kFile);
        const QString text(reinterpret_cast<const QChar*>(bytes.data()),
                           static_cast<qsizetype>(bytes.size() / 2));
        return QJsonDocument::fromJson(text.toUtf8()).object();
    }
    QJsonObject Entry(const char* production) const {
        return Settings().value(PathOf(mHome.Path(production))).toObject();
    }
    void WriteSettings(const QJsonObject& settings) const {
        const QString text = QString::fromUtf8(QJsonDocument(settings).toJson());
        mHome.Write(kFile,
                    {reinterpret_cast<const char*>(text.utf16()), static_cast<std::size_t>(text.size()) * 2});
    }

    /// True once the program follows the folder: it has been opened.
    bool IsFollowed(const QProcess& process, const char* folder) const {
        struct stat facts {};
        stat(mHome.Path(folder).c_str(), &facts);
        std::ostringstream inode;
        inode << " ino:" << std::hex << facts.st_ino << ' ';
        std::error_code ignored;
        for (const auto& entry : std::filesystem::directory_iterator(
                 "/proc/" + std::to_string(process.processId()) + "/fdinfo", ignored)) {
            std::ifstream info(entry.path());
            if (std::string(std::istreambuf_iterator<char>(info), {}).find(inode.str()) != std::string::npos)
                return true;
        }
        return false;
    }
    void StartOn(QProcess& process, const char* production, const char* openFolder) {
        Start(process, {"--profile", mProfile, mHome.Path(production)});
        EXPECT_TRUE(WaitFor([&] { return IsFollowed(process, openFolder); })) << mHome.Read("profile/log.txt");
    }

    const std::string mProfile = mHome.MakeFolder("profile");
    static constexpr char kFile[] = "profile/Production Panel Settings";
};

TEST_F(RememberedView, IsBackAfterTheEndOfAProgramAndAKill) {
    const QJsonArray open{PathOf(mHome.Path("Harbour/Reels/Day 1"))};
    const QJsonObject size{{QStringLiteral("mColumnID"), 1399421541}, {QStringLiteral("mWidth"), 120}};
    const QJsonObject header{{QStringLiteral("mColumnDataList"), QJsonArray{size}},
                             {QStringLiteral("mSortColumnID"), 1399421541},
                             {QStringLiteral("mSortAscending"), false}};
    const QJsonObject tree{{QStringLiteral("mOpenFolderPaths"), open},
                           {QStringLiteral("mHeaderRowData"), header}};
    const QJsonObject place{{QStringLiteral("left"), 5000},
                            {QStringLiteral("top"), 100},
                            {QStringLiteral("width"), 500},
                            {QStringLiteral("height"), 400}};
    const QJsonObject other{{QStringLiteral("mLater"), QJsonArray{1, 2.5}}, {QStringLiteral("mZoom"), 0.25}};
    WriteSettings(
        {{PathOf(mHome.Path("Harbour")), QJsonObject{{QStringLiteral("mDirectoryViewData"), tree},
                                                     {QStringLiteral("mFloatingWindowGlobalRect"), place},
                                                     {QStringLiteral("mZoom"), 0.5}}},
         {QStringLiteral("/elsewhere"), other}});
    std::string saved;
    for (const bool isKilled : {false, true, false}) {
        QProcess process;
        StartOn(process, "Harbour", "Harbour/Reels/Day 1");
        if (isKilled) {
            process.kill();
            process.waitForFinished();
            EXPECT_EQ(mHome.Read(kFile), saved);
            continue;
        }
        process.terminate();
        EXPECT_EQ(Finish(process).mExitCode, 0);
        const QJsonObject entry = Entry("Harbour");
        const QJsonObject left = entry.value(QLatin1String("mDirectoryViewData")).toObject();
        EXPECT_EQ(left.value(QLatin1String("mOpenFolderPaths")).toArray(), open);
        const QJsonObject columns = left.value(QLatin1String("mHeaderRowData")).toObject();
        EXPECT_EQ(columns.value(QLatin1String("mColumnDataList")).toArray().first().toObject(), size);
        EXPECT_EQ(columns.value(QLatin1String("mColumnDataList")).toArray().size(), 5);
        EXPECT_EQ(columns.value(QLatin1String("mSortColumnID")), 1399421541);
        EXPECT_EQ(entry.value(QLatin1String("mZoom")), 0.5);
        const QJsonObject rect = entry.value(QLatin1String("mFloatingWindowGlobalRect")).toObject();
        EXPECT_EQ(rect.value(QLatin1String("width")), 500);
        EXPECT_LE(rect.value(QLatin1String("left")).toInt(), 300) << "on the screen, which is 800 wide";
        EXPECT_EQ(Settings().value(QLatin1String("/elsewhere")).toObject(), other);
        saved = mHome.Read(kFile);
    }
}

TEST_F(RememberedView, TwoProgramsOnOneProfileKeepBothAndABrokenFileIsKeptAside) {
    mHome.Write(kFile, "{\"docks\": [");
    QProcess first, second;
    StartOn(first, "Harbour", "Harbour");
    StartOn(second, "North", "North");
    first.terminate();
    second.terminate();
    EXPECT_EQ(Finish(first).mExitCode, 0);
    EXPECT_EQ(Finish(second).mExitCode, 0);
    EXPECT_FALSE(Entry("Harbour").isEmpty());
    EXPECT_FALSE(Entry("North").isEmpty());
    EXPECT_EQ(mHome.Read(std::string(kFile) + ".unreadable-1"), "{\"docks\": [");
    EXPECT_FALSE(mHome.Exists(std::string(kFile) + ".unreadable-2"));
}

}  // namespace
