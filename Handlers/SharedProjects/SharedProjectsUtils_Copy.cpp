// Copies and moves of files and folders: first checked, then done.
#include <cerrno>
#include <map>

#include "Handlers/SharedProjects/SharedProjectsColumns.h"
#include "host/core/Localizer.h"
#include "host/core/Logging.h"
#include "host/core/UserNotice.h"
#include "host/dialogs/MessageBox.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProjectFiles.h"

namespace HandlerSharedProjects::Utils {

namespace {

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

/// An item that is to be copied or moved, with what stands at both its places.
struct Candidate {
    UTF16String mSource;
    UTF16String mDestination;
    bool mIsFolder = false;
    bool mIsTaken = false;

    /// It lies there already.
    bool IsAtItsPlace() const { return IsEqualFoldingASCII(mSource, mDestination); }
};

/// Asks the volume for all of them at once.
std::vector<Candidate> FindCandidates(const UTF16StringVec& paths, const UTF16String& destinationFolder) {
    std::vector<Candidate> candidates;
    UTF16StringVec places;
    for (const UTF16String& path : paths) {
        const UTF16String source = PathUtils::ToNormalizedPath(path);
        candidates.push_back({source, PathUtils::ToNormalizedPath(PathUtils::CombinePaths(
                                          destinationFolder, PathUtils::GetFullFilePart(source)))});
        places.push_back(source);
        places.push_back(candidates.back().mDestination);
    }
    const std::vector<PathUtils::PathKind> kinds = PathUtils::GetKinds(places);
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        candidates[i].mIsFolder = kinds[2 * i] == PathUtils::PathKind::Folder;
        candidates[i].mIsTaken = kinds[2 * i + 1] != PathUtils::PathKind::Nothing;
    }
    return candidates;
}

/// Unused names for all items whose names are taken, in their order.
UTF16StringVec FindUniqueNames(const std::vector<Candidate>& items) {
    UTF16StringVec taken;
    for (const Candidate& item : items)
        if (item.mIsTaken && !item.IsAtItsPlace())
            taken.push_back(item.mIsFolder ? PathUtils::AddTrailingSlash(item.mDestination)
                                           : item.mDestination);
    return Utilities::MakeUniqueFilenames(taken, 1, u"_");
}

/// Checks all items, telling the user of each that cannot go.
class Planner {
public:
    explicit Planner(const UTF16String& destinationFolder)
        : mDestinationFolder(PathUtils::ToNormalizedPath(destinationFolder)) {}

    void Add(const std::vector<Candidate>& items, bool makeUniqueNames) {
        const UTF16StringVec names = makeUniqueNames ? FindUniqueNames(items) : UTF16StringVec();
        auto name = names.begin();
        for (const Candidate& item : items)
            if (makeUniqueNames && item.mIsTaken && !item.IsAtItsPlace())
                Enter(item.mSource, *name++);
            else
                Add(item);
    }

    bool HaveAllPassed() const { return mHaveAllPassed; }
    std::vector<PlannedItem> Get() const {
        std::vector<PlannedItem> items;
        for (const auto& [source, destination] : mPlan) items.push_back({source, destination});
        return items;
    }

private:
    void Add(const Candidate& item) {
        if (!item.mIsTaken) {
            const bool isInItself =
                item.mIsFolder && Utilities::IsPathWithinDirectory(mDestinationFolder, item.mSource, true);
            isInItself ? Refuse(TellItIsASubFolder) : Enter(item.mSource, item.mDestination);
        } else if (!item.IsAtItsPlace()) {
            Refuse(TellItExists);
        }
    }
    void Refuse(void (*tell)()) {
        mHaveAllPassed = false;
        tell();
    }
    void Enter(const UTF16String& source, const UTF16String& destination) {
        if (mHaveAllPassed) mPlan.emplace(source, destination);
    }

    const UTF16String mDestinationFolder;
    bool mHaveAllPassed = true;
    /// Normalised sources and destinations, in the order of the sources' texts.
    std::map<UTF16String, UTF16String> mPlan;
};

bool IsCancelled(const ItemOutcome& outcome) {
    return outcome.mFailure && outcome.mFailure->SystemError() == ECANCELED;
}

/// Traces, and has open projects follow their folder.
void NoteMove(const PlannedItem& item, const ItemOutcome& outcome) {
    if (outcome.mIsFolder && outcome.mResult == ItemOutcome::Result::Done)
        UpdatePathsOfOpenProjectsAndLockFiles(item.mSource, item.mDestination);
    else if (!outcome.mIsFolder && IsVantorProjectFile(item.mSource))
        TraceOutcome(outcome, item.mSource, item.mDestination);
}

}  // namespace

bool CopyFiles(const UTF16StringVec& sources, const UTF16String& destinationFolder, bool move,
               bool makeUniqueNames) {
    CopyReport report;
    return CopyFiles(sources, destinationFolder, move, makeUniqueNames, report);
}

bool CopyFiles(const UTF16StringVec& sources, const UTF16String& destinationFolder, bool move,
               bool makeUniqueNames, CopyReport& report) {
    report = {.mStayed = sources, .mDone = {}};
    try {
        Planner planner(destinationFolder);
        planner.Add(FindCandidates(sources, destinationFolder), makeUniqueNames);
        if (!planner.HaveAllPassed()) return false;
        const std::vector<PlannedItem> plan = planner.Get();
        const std::vector<ItemOutcome> outcomes = move ? MoveItems(plan) : CopyItems(plan);
        report.mStayed.clear();
        for (std::size_t i = 0; i < plan.size(); ++i) {
            if (move) NoteMove(plan[i], outcomes[i]);
            if (outcomes[i].mResult == ItemOutcome::Result::Done) report.mDone.push_back(plan[i]);
            if (outcomes[i].HasStayed()) report.mStayed.push_back(plan[i].mSource);
            if (IsCancelled(outcomes[i])) report.mIsCancelled = true;
        }
        for (const ItemOutcome& outcome : outcomes)
            if (outcome.mFailure) throw FileException(*outcome.mFailure);
        return true;
    } catch (const FileException& exception) {
        LogException(exception, __PRETTY_FUNCTION__);
        return false;
    }
}

void TellMoved(const CopyReport& report, const UTF16String& folder) {
    const std::vector<PlannedItem>& items = report.mDone;
    const auto number = [](std::size_t n) { return NumberToString(static_cast<long long>(n)); };
    const UTF16String place = Columns::GetShownName(PathUtils::AddTrailingSlash(folder));
    if (report.mIsCancelled)
        return TellInStatusBar(ZString(
            "$$$/Vantor/Handlers/ZuProductionFolder/MoveCancelled=Cancelled: moved to “@0”: @1, left where "
            "they were: @2.",
            {place, number(items.size()), number(report.mStayed.size())}));
    if (items.empty()) return;
    if (items.size() == 1)
        return TellInStatusBar(ZString("$$$/Vantor/Handlers/ZuProductionFolder/Moved=“@0” was moved to “@1”.",
                                       {Columns::GetPathDisplayName(items.front().mSource), place}));
    TellInStatusBar(ZString("$$$/Vantor/Handlers/ZuProductionFolder/MovedSeveral=@0 items were moved to “@1”.",
                            {number(items.size()), place}));
}

}  // namespace HandlerSharedProjects::Utils
