// Copies and moves of files and folders: first checked, then done.
#include <map>

#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "host/core/Localizer.h"
#include "host/core/Logging.h"
#include "host/dialogs/MessageBox.h"
#include "host/files/Dir.h"
#include "host/files/File.h"
#include "host/files/FileException.h"
#include "host/files/FileUtils.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProjectFiles.h"

namespace HandlerSharedProjects::Utils {

namespace {

/// Normalised sources and destinations, in the order of the sources' texts.
using Plan = std::map<UTF16String, UTF16String>;

void TellLocalized(const char* titleKey, const char* textKey) {
    const UTF16String title = Localizer::Get()->Localize(titleKey);
    const UTF16String text = Localizer::Get()->Localize(textKey);
    MessageBox(title, text);
}

void TellItIsASubFolder() {
    TellLocalized("$$$/Vantor/Handlers/ZuProductionFolder/CopyToSubDir=Copying to Sub-Directory",
                  "$$$/Vantor/Handlers/ZuProductionFolder/CannotCopyToSubDir=Can't copy a folder to one of its "
                  "sub-directories");
}

void TellItExists() {
    TellLocalized("$$$/Vantor/Handlers/ZuProductionFolder/FileExists=File Exists",
                  "$$$/Vantor/Handlers/ZuProductionFolder/FileAlreadyExists=File already exists");
}

UTF16String MakeUniqueName(const UTF16String& source, const UTF16String& destination) {
    const UTF16String path =
        PathUtils::IsDirectory(source) ? PathUtils::AddTrailingSlash(destination) : destination;
    return Utilities::MakeUniqueFilename(path, 1, u"_", {});
}

bool IsFolderAbove(const UTF16String& source, const UTF16String& destinationFolder) {
    return PathUtils::IsDirectory(source) &&
           Utilities::IsPathWithinDirectory(PathUtils::ToNormalizedPath(destinationFolder), source, true);
}

/// Checks all items, telling the user of each that cannot go.
class Planner {
public:
    Planner(const UTF16String& destinationFolder, bool makeUniqueNames)
        : mDestinationFolder(destinationFolder), mMakeUniqueNames(makeUniqueNames) {}

    void Add(const UTF16String& path) {
        const UTF16String source = PathUtils::ToNormalizedPath(path);
        const UTF16String destination = PathUtils::ToNormalizedPath(
            PathUtils::CombinePaths(mDestinationFolder, PathUtils::GetFullFilePart(source)));
        if (!PathUtils::ExistsOnDisk(destination, false)) {
            if (IsFolderAbove(source, mDestinationFolder))
                Refuse(TellItIsASubFolder);
            else
                Enter(source, destination);
        } else if (IsEqualFoldingASCII(source, destination)) {
            return;
        } else if (mMakeUniqueNames) {
            Enter(source, MakeUniqueName(source, destination));
        } else {
            Refuse(TellItExists);
        }
    }

    bool HaveAllPassed() const { return mHaveAllPassed; }
    const Plan& Get() const { return mPlan; }

private:
    void Refuse(void (*tell)()) {
        mHaveAllPassed = false;
        tell();
    }
    void Enter(const UTF16String& source, const UTF16String& destination) {
        if (mHaveAllPassed) mPlan.emplace(source, destination);
    }

    const UTF16String& mDestinationFolder;
    const bool mMakeUniqueNames;
    bool mHaveAllPassed = true;
    Plan mPlan;
};

void CopyItem(const UTF16String& source, const UTF16String& destination) {
    if (PathUtils::IsDirectory(source))
        FileUtils::Copy(Dir(source), Dir(destination));
    else
        FileUtils::Copy(source, destination);
}

/// False for a project that stayed where it is.
bool MoveItem(const UTF16String& source, const UTF16String& destination) {
    if (IsVantorProjectFile(source) && !PathUtils::IsDirectory(source))
        return MoveProjectAndLockFiles(source, destination);
    File::Move(source, destination);
    if (PathUtils::IsDirectory(destination)) UpdatePathsOfOpenProjectsAndLockFiles(source, destination);
    return true;
}

void TellWhoStayed(const UTF16StringVec& projects) {
    if (projects.empty()) return;
    const UTF16String title =
        ZString("$$$/Vantor/Handlers/ZuProductionFolder/ProjectsNotMoved/Title=Projects Not Moved");
    const UTF16String text = ZString(
        "$$$/Vantor/Handlers/ZuProductionFolder/ProjectsNotMoved/Message=These projects were not moved, "
        "because their lock could not be taken or they are not there any more: \n@0",
        {ToNameLines(projects)});
    MessageBox(title, text);
}

}  // namespace

bool CopyFiles(const UTF16StringVec& sources, const UTF16String& destinationFolder, bool move,
               bool makeUniqueNames) {
    Planner planner(destinationFolder, makeUniqueNames);
    for (const UTF16String& source : sources) planner.Add(source);
    if (!planner.HaveAllPassed()) return false;
    UTF16StringVec stayed;
    bool isDone = true;
    try {
        for (const auto& [source, destination] : planner.Get()) {
            if (!move)
                CopyItem(source, destination);
            else if (!MoveItem(source, destination))
                stayed.push_back(source);
        }
    } catch (const FileException& exception) {
        LogException(exception, __PRETTY_FUNCTION__);
        isDone = false;
    }
    TellWhoStayed(stayed);
    return isDone;
}

}  // namespace HandlerSharedProjects::Utils
