#include <gtest/gtest.h>

#include "desk/core/edges/Services.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/files/copy/ItemCopier.h"
#include "desk/files/disk/PosixFileSystem.h"
#include "tests/support/TreeSnapshot.h"
#include "tests/volume/FaultyMount.h"
#include "tests/volume/TestProduction.h"

namespace {

/// A mount that keeps names for a second and loses replies, where each of these once cost an only copy.
struct Case {
    const char* mName;
    QStringList mRules;
    bool mIsFolder;
    const char* mTo;
    bool mIsCopy = false;
};

void PrintTo(const Case& deed, std::ostream* out) {
    *out << deed.mName;
}

class CachedLooks : public testing::TestWithParam<Case> {
protected:
    CachedLooks() {
        desk::GetServices().mFileSystem = &mDisk;
        desk::GetServices().mWorkerPool = &mWorkers;
    }
    ~CachedLooks() override { desk::GetServices() = mBefore; }

    QStringList Options() const {
        QStringList options =
            QStringLiteral("--delay-ms 0 --cache-seconds 1 --threads 2").split(QLatin1Char(' '));
        for (const QString& rule : GetParam().mRules) options << QStringLiteral("--fail") << rule;
        return options;
    }
    void Do(const std::string& from, const std::string& to) {
        desk::WorkProgress progress;
        if (GetParam().mIsCopy) return desk::CopyItem(from, to, progress);
        EXPECT_EQ(desk::MoveItem(from, to, progress).mLeftBehind.mPath, "");
    }

    const desk::Services mBefore = desk::GetServices();
    desk::PosixFileSystem mDisk;
    desk::WorkerPool mWorkers{4};
    TemporaryFolder mFolder = testproduction::MakeFolderInMemory();
};

const QString kLostRemovals = QStringLiteral("unlink:1:5:after");
const QString kLostRenames = QStringLiteral("rename:1:5:after");

INSTANTIATE_TEST_SUITE_P(Deeds, CachedLooks,
                         testing::Values(Case{"FileToAnotherVolume", {kLostRemovals}, false, "elsewhere/item"},
                                         Case{"FolderToAnotherVolume", {kLostRemovals}, true, "elsewhere/item"},
                                         Case{"FileOnItsVolume",
                                              {QStringLiteral("unlink:1:5:after:once"),
                                               QStringLiteral("unlink:2:5:before:once")},
                                              false,
                                              "volume/there/item"},
                                         Case{"FolderOnItsVolume", {kLostRenames}, true, "volume/there/item"},
                                         Case{"CopyOfFolder", {kLostRenames}, true, "volume/there/item", true}),
                         [](const auto& deed) { return std::string(deed.param.mName); });

}  // namespace

TEST_P(CachedLooks, CostNoOnlyCopyWhenTheReplyIsLost) {
    if (!FaultyMount::IsPossible()) GTEST_SKIP() << "no /dev/fuse: cached looks were not tried";
    mFolder.MakeFolder("volume/there");
    mFolder.MakeFolder("elsewhere");
    for (const char* name : {"a", "b", "sub/c"})
        mFolder.Write(std::string("volume/here/item") + (GetParam().mIsFolder ? std::string("/") + name : ""),
                      name);
    const TreeSnapshot item = TakeSnapshot(mFolder.Path("volume/here/item"));
    {
        slowvolume::VolumeMount mount(QStringLiteral(ZU_BINARY_DIR "/bin/slow-volume"), mFolder.Path("volume"),
                                      Options());
        if (!mount.IsMounted())
            GTEST_SKIP() << "not allowed to mount, cached looks were not tried: " << mount.ErrorText();
        const std::string to(GetParam().mTo);
        const std::string volume = "volume/";
        Do(mount.Path("here/item"),
           to.starts_with(volume) ? mount.Path(to.substr(volume.size())) : mFolder.Path(to));
    }
    EXPECT_EQ(TakeSnapshot(mFolder.Path(GetParam().mTo)), item);
    EXPECT_EQ(TakeSnapshot(mFolder.Path("volume/here/item")), GetParam().mIsCopy ? item : TreeSnapshot());
}
