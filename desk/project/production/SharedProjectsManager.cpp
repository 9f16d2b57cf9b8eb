#include "host/project/SharedProjectsManager.h"

#include "desk/project/production/Production.h"
#include "host/files/PathUtils.h"

namespace host {

using desk::Production;

bool IsSharedProjectsManagerActive() {
    return Production::Instance().IsOpen();
}

UTF16String GetSharedProjectsManagerFolderPath() {
    return Production::Instance().GetFolder();
}

bool IsWithinCurrentZuProductionFolder(const UTF16String& path) {
    const UTF16String folder = PathUtils::AddTrailingSlash(Production::Instance().GetFolder());
    const UTF16String normalized = PathUtils::ToNormalizedPath(path);
    return !folder.empty() && normalized.size() > folder.size() && normalized.starts_with(folder);
}

void SetSharedProjectsNotifyPauseFn(std::function<void(bool pause)> fn) {
    Production::Instance().SetPauseFunction(std::move(fn));
}

const std::string& GetZuProductionLoggingCategory() {
    static const std::string kCategory = "ZuProduction";
    return kCategory;
}

ZuProductionFolderOpenedMessage::ZuProductionFolderOpenedMessage(UTF16String path) : mPath(std::move(path)) {}
ZuProductionFolderOpenedMessage::~ZuProductionFolderOpenedMessage() = default;

ZuProductionFolderClosedMessage::ZuProductionFolderClosedMessage(UTF16String path) : mPath(std::move(path)) {}
ZuProductionFolderClosedMessage::~ZuProductionFolderClosedMessage() = default;

}  // namespace host
