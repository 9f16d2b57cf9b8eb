#pragma once

#include "host/core/Export.h"

namespace desk {

class Desktop;
class Dialogs;
class FileSystem;
class FolderStore;
class MainThread;
class WorkerPool;

/// The edges of the world and the workers, as the program (or a test) has set them up. None is owned; all
/// are set before the first host operation is called and stay until the last.
struct Services {
    FileSystem* mFileSystem = nullptr;
    MainThread* mMainThread = nullptr;
    Dialogs* mDialogs = nullptr;
    Desktop* mDesktop = nullptr;
    WorkerPool* mWorkerPool = nullptr;
    FolderStore* mFolderStore = nullptr;
};

/// The process's services. Set up on the UI thread before any worker runs; then read from any thread.
ZUHOST_API Services& GetServices();

}  // namespace desk
