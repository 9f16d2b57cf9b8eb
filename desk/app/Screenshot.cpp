#include "desk/app/Screenshot.h"

#include <QBuffer>
#include <QPixmap>
#include <QWidget>
#include <utility>

#include "desk/core/durable/NewFile.h"
#include "desk/core/durable/ReplaceFile.h"
#include "desk/core/edges/Services.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/files/live/FolderStore.h"
#include "desk/project/production/Production.h"

namespace desk {
namespace {

constexpr int kDeadline = 30'000;
constexpr int kPace = 4;
/// From one look to the next the event loop lays out, paints, and asks for the facts of rows that came into
/// view: after so many nothing is left that one leads to after another.
constexpr int kQuietLooks = 5;

}  // namespace

Screenshot::Screenshot(QWidget& window, std::string path, std::function<bool()> isOpening,
                       std::function<bool()> isIdle, Done done)
    : mWindow(window),
      mPath(std::move(path)),
      mIsOpening(std::move(isOpening)),
      mIsIdle(std::move(isIdle)),
      mDone(std::move(done)) {
    mSinceStart.start();
    QObject::connect(&mTimer, &QTimer::timeout, &mTimer, [this] { Look(); });
    mTimer.start(kPace);
}

bool Screenshot::AreRowsShown() const {
    if (mIsOpening()) return false;
    const host::UTF16String& folder = Production::Instance().GetFolder();
    return folder.empty() || GetServices().mFolderStore->IsListed(folder);
}

/// What began and ended between two looks counts too: something may have come of it.
bool Screenshot::IsQuiet() {
    const WorkerPool& pool = *GetServices().mWorkerPool;
    const std::size_t tasks = pool.CountTasks();
    return std::exchange(mTasks, tasks) == tasks && !pool.IsBusy() && mIsIdle();
}

void Screenshot::Look() {
    const bool isLate = mSinceStart.elapsed() > kDeadline;
    const bool isQuiet = IsQuiet();
    mQuietLooks = isQuiet ? mQuietLooks + 1 : 0;
    if (!AreRowsShown()) {
        mQuietLooks = 0;
        if (!isLate) return;
        mTimer.stop();
        return mDone("the production did not show within 30 seconds; no picture was written");
    }
    if (mQuietLooks < kQuietLooks && !isLate) return;
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
