#include "tests/volume/worker/HostProcess.h"

#include <thread>

#include "desk/core/edges/Services.h"
#include "desk/project/lock/Leftovers.h"
#include "desk/project/lock/LockKeeper.h"
#include "desk/project/production/Production.h"
#include "host/core/Strings.h"
#include "host/project/ProductionTrash.h"

HostProcess::HostProcess(const std::string& production, unsigned workers) : mWorkers(workers) {
    desk::Services& services = desk::GetServices();
    services.mFileSystem = &mDisk;
    services.mMainThread = &mMainThread;
    services.mDesktop = &mDesktop;
    services.mWorkerPool = &mWorkers;
    mStore = desk::CreateFolderStore(desk::SweepInBackground);
    services.mFolderStore = mStore.get();
    mDocuments = std::make_unique<desk::ProjectDocuments>();
    mCopies = std::make_unique<desk::CopyQueue>();
    desk::Production::Instance().Open(host::UTF8to16(production));
}

HostProcess::~HostProcess() {
    mDocuments.reset();
    Settle();
    desk::LockKeeper::Instance().FinishGivingUp(std::chrono::seconds(3));
    mCopies.reset();
    desk::Production::Instance().Close();
    mStore.reset();
    desk::GetServices() = {};
}

void HostProcess::Settle() {
    for (int quiet = 0; quiet < 2; ++quiet) {
        QCoreApplication::processEvents();
        if (!mWorkers.WaitUntilIdle(std::chrono::milliseconds(0)) || mCopies->IsBusy()) {
            quiet = 0;
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    }
}

std::string HostProcess::TrashFolder() const {
    return host::UTF16to8(host::GetZuProductionTrashDirectoryPath());
}
