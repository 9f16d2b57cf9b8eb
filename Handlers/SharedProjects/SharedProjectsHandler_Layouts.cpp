// The settings file with what is remembered of each production.
#include <string>

#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "host/core/DirectoryRegistry.h"
#include "host/core/Logging.h"
#include "host/core/SharedSettingsFile.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"

namespace HandlerSharedProjects {

UTF16String SharedProjectsHandler::GetProductionPanelStateDataFilePath() {
    static const UTF16String kStateDataFileName = u"Production Panel Settings";
    const UTF16String profile = DirectoryRegistry::FindDirectory(DirectoryRegistry::kUserProfile);
    return profile.empty() ? profile : profile + kStateDataFileName;
}

void SharedProjectsHandler::SaveStateDataForProduction(const UTF16String& productionPath,
                                                       const SharedProjectsTabView::StateData& state) {
    if (productionPath.empty()) return;
    const UTF16String production = PathUtils::ToNormalizedPath(productionPath);
    SharedProjectsTabView::StateData& stored = mProductionStateData[production];
    stored = state;
    MakeUsable(stored, production);
    mUnsavedProductions.insert(production);
    SaveProductionLayouts();
}

bool SharedProjectsHandler::LoadStateDataForProduction(const UTF16String& productionPath,
                                                       SharedProjectsTabView::StateData& state) {
    if (productionPath.empty()) return false;
    if (!mFileLayouts) LoadProductionLayouts();
    const auto stored = mProductionStateData.find(PathUtils::ToNormalizedPath(productionPath));
    if (stored == mProductionStateData.end()) return false;
    state = stored->second;
    return true;
}

void SharedProjectsHandler::LoadProductionLayouts() {
    const UTF16String path = GetProductionPanelStateDataFilePath();
    if (path.empty()) return;
    try {
        const SharedSettingsFile file(path);
        if (ReadLayoutsFrom(file).empty()) return;
        // Another program may be about to set it aside as well, and to write a good one.
        const SharedSettingsFile::Lock lock(file);
        if (lock.IsHeld()) ReadOrSetAside(file);
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
}

void SharedProjectsHandler::SaveProductionLayouts() {
    const UTF16String path = GetProductionPanelStateDataFilePath();
    if (path.empty()) return;
    try {
        const SharedSettingsFile file(path);
        const SharedSettingsFile::Lock lock(file);
        if (lock.IsHeld() && ReadOrSetAside(file)) WriteUnsavedTo(file);
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
}

std::string SharedProjectsHandler::ReadLayoutsFrom(const SharedSettingsFile& file) {
    FileLayouts read;
    try {
        read.mBytes = file.Read();
        if (mFileLayouts && mFileLayouts->mBytes == read.mBytes) return {};
        if (read.mBytes) read.mObject = ParseLayouts(*read.mBytes);
    } catch (const FileException&) {
        throw;
    } catch (const std::exception& exception) {
        return exception.what();
    }
    ProductionStateData productions = HandlerSharedProjects::ReadLayouts(read.mObject);
    for (const UTF16String& unsaved : mUnsavedProductions)
        productions.insert_or_assign(unsaved, std::move(mProductionStateData[unsaved]));
    mProductionStateData = std::move(productions);
    mFileLayouts = std::move(read);
    return {};
}

bool SharedProjectsHandler::ReadOrSetAside(const SharedSettingsFile& file) {
    const std::string reason = ReadLayoutsFrom(file);
    if (reason.empty()) return true;
    if (!file.SetAside(reason)) return false;
    mFileLayouts.emplace();
    return true;
}

void SharedProjectsHandler::WriteUnsavedTo(const SharedSettingsFile& file) {
    JSONObject layouts = mFileLayouts->mObject;
    for (const UTF16String& production : mUnsavedProductions)
        AddToObject(layouts, UTF16to8(production), mProductionStateData.at(production));
    std::string bytes = FormatLayouts(layouts);
    if (bytes != mFileLayouts->mBytes) file.Replace(bytes);
    mFileLayouts = {std::move(bytes), std::move(layouts)};
    mUnsavedProductions.clear();
}

}  // namespace HandlerSharedProjects
