#include "desk/app/Screenshot.h"

#include <QBuffer>
#include <QPixmap>
#include <QWidget>

#include "desk/core/durable/NewFile.h"
#include "desk/core/durable/ReplaceFile.h"
#include "desk/core/edges/Services.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/files/live/FolderStore.h"
#include "desk/project/production/Production.h"

namespace desk {
namespace {

constexpr int kDeadline = 30'000;
/// Longer than any pause between a row's coming into view and the question for its facts.
constexpr int kQuietTime = 300;

}  // namespace

Screenshot::Screenshot(QWidget& window, std::string path, std::function<bool()> isOpening, Done done)
    : mWindow(window), mPath(std::move(path)), mIsOpening(std::move(isOpening)), mDone(std::move(done)) {
    mSinceStart.start();
    mSinceBusy.start();
    QObject::connect(&mTimer, &QTimer::timeout, &mTimer, [this] { Look(); });
    mTimer.start(20);
}

bool Screenshot::AreRowsShown() const {
    if (mIsOpening()) return false;
    const host::UTF16String& folder = Production::Instance().GetFolder();
    return folder.empty() || GetServices().mFolderStore->IsListed(folder);
}

void Screenshot::Look() {
    const bool isLate = mSinceStart.elapsed() > kDeadline;
    if (!AreRowsShown()) {
        mSinceBusy.restart();
        if (!isLate) return;
        mTimer.stop();
        return mDone("the production did not show within 30 seconds; no picture was written");
    }
    if (GetServices().mWorkerPool->IsBusy()) mSinceBusy.restart();
    if (mSinceBusy.elapsed() < kQuietTime && !isLate) return;
    mTimer.stop();
    mDone(Write());
}

std::string Screenshot::Write() const {
    // Where the keyboard is depends on what came first, the rows or the window's activation.
    if (QWidget* focused = mWindow.focusWidget()) focused->clearFocus();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!mWindow.grab().save(&buffer, "PNG")) return "the picture could not be made";
    const FileReplacement replacement =
        ReplaceFile(*GetServices().mFileSystem, mPath, bytes.toStdString(), GetModeOfNewFiles());
    return replacement.mError ? replacement.mError->what() : std::string();
}

}  // namespace desk
