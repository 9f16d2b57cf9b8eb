#pragma once

#include <QCoreApplication>
#include <memory>
#include <string>

#include "desk/core/edges/QtMainThread.h"
#include "desk/core/edges/SystemDesktop.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/files/disk/PosixFileSystem.h"
#include "desk/files/live/ChangeSource.h"
#include "desk/files/live/FolderStore.h"
#include "desk/project/document/ProjectDocuments.h"
#include "desk/project/production/CopyQueue.h"
#include "tests/support/AnsweringDialogs.h"

/// A process of the host, real but for its window, with a production open. One in a process.
class HostProcess {
public:
    explicit HostProcess(const std::string& production, unsigned workers = 4);
    /// Ends as the program does: what is open is closed, and locks that could not be given up are tried again.
    ~HostProcess();

    /// Lets everything come to its end that is under way.
    void Settle();
    /// The trash folder's path.
    std::string TrashFolder() const;

    AnsweringDialogs mDialogs;

private:
    int mArgumentCount = 1;
    char mName[7] = "worker";
    char* mArguments[2] = {mName, nullptr};
    QCoreApplication mApplication{mArgumentCount, mArguments};
    desk::PosixFileSystem mDisk;
    desk::SystemDesktop mDesktop;
    desk::QtMainThread mMainThread;
    desk::WorkerPool mWorkers;
    std::unique_ptr<desk::FolderStore> mStore;
    std::unique_ptr<desk::ProjectDocuments> mDocuments;
    std::unique_ptr<desk::CopyQueue> mCopies;
};
