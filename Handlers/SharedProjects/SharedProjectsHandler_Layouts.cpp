// The settings file with what is remembered of each production.
#include <map>
#include <stdexcept>
#include <string>
#include <utility>

#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "host/core/DirectoryRegistry.h"
#include "host/core/Logging.h"
#include "host/core/SharedSettingsFile.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"

namespace HandlerSharedProjects {

namespace {

/// The records that are not in the settings file yet, of each such file. They outlive the panel: it is mostly
/// being closed when they are saved.
ProductionStateData& GetUnsaved() {
    static std::map<UTF16String, ProductionStateData> sUnsaved;
    return sUnsaved[SharedProjectsHandler::GetProductionPanelStateDataFilePath()];
}

}  // namespace

UTF16String SharedProjectsHandler::GetProductionPanelStateDataFilePath() {
    static const UTF16String kStateDataFileName = u"Production Panel Settings";
    const UTF16String profile = DirectoryRegistry::FindDirectory(DirectoryRegistry::kUserProfile);
    return profile.empty() ? profile : profile + kStateDataFileName;
}

void SharedProjectsHandler::SaveStateDataForProduction(const UTF16String& productionPath,
                                                       const SharedProjectsTabView::StateData& state) {
    if (productionPath.empty()) return;
    const UTF16String production = PathUtils::ToNormalizedPath(productionPath);
    SharedProjectsTabView::StateData& unsaved = GetUnsaved()[production];
    unsaved = state;
    MakeUsable(unsaved, production);
    SaveProductionLayouts();
}

bool SharedProjectsHandler::LoadStateDataForProduction(const UTF16String& productionPath,
                                                       SharedProjectsTabView::StateData& state) {
    if (productionPath.empty()) return false;
    const UTF16String production = PathUtils::ToNormalizedPath(productionPath);
    const ProductionStateData& all = GetUnsaved();
    if (const auto unsaved = all.find(production); unsaved != all.end()) {
        state = unsaved->second;
        return true;
    }
    if (!mFileLayouts) LoadProductionLayouts();
    if (!mFileLayouts) return false;
    auto stored = FindLayout(mFileLayouts->mMembers, production);
    if (stored) state = std::move(*stored);
    return stored.has_value();
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
    WriteUnsaved(SharedSettingsFile::kPatience);
}

void SharedProjectsHandler::TryToSaveAgain() {
    if (!GetUnsaved().empty()) WriteUnsaved({});
}

void SharedProjectsHandler::WriteUnsaved(std::chrono::milliseconds patience) {
    const UTF16String path = GetProductionPanelStateDataFilePath();
    if (path.empty()) return;
    try {
        const SharedSettingsFile file(path);
        const SharedSettingsFile::Lock lock(file, patience);
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
        if (read.mBytes) read.mMembers = ParseLayouts(*read.mBytes);
    } catch (const FileException&) {
        throw;
    } catch (const JSONBadCast& exception) {
        return exception.what();
    } catch (const std::runtime_error& exception) {
        return exception.what();
    }
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
    // What a write that fails leaves is read anew.
    FileLayouts layouts = *std::exchange(mFileLayouts, {});
    bool isChanged = false;
    for (const auto& [production, state] : GetUnsaved()) {
        UTF16String& member = layouts.mMembers[UTF16to8(production)];
        UTF16String text = GetJSONString(ToJSON(state));
        isChanged |= text != member;
        member = std::move(text);
    }
    if (isChanged) file.Replace(layouts.mBytes.emplace(FormatLayouts(layouts.mMembers)));
    mFileLayouts = std::move(layouts);
    GetUnsaved().clear();
}

}  // namespace HandlerSharedProjects
