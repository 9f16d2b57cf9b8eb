// Names that are changed in place.
#include <algorithm>
#include <cerrno>
#include <utility>

#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"
#include "Handlers/SharedProjects/SharedProjectsStateRestorer.h"
#include "host/core/Localizer.h"
#include "host/core/Logging.h"
#include "host/core/UserNotice.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"
#include "host/project/ItemOperations.h"
#include "host/toolkit/UI_NodeManager.h"

namespace HandlerSharedProjects {

namespace {

constexpr double kSlowSecondClickSeconds = 0.5;
/// The editor has left the screen by then.
constexpr double kFolderRenameSeconds = 0.1;
constexpr double kDeferredRenameSeconds = 0.5;

/// One for all views.
UI_TimerID GetRenameTimerID() {
    static const UI_TimerID sID = UI_NodeManager::Get()->GetUniqueTimerID();
    return sID;
}

void TellInvalidName(const UTF16String& name, const UTF16String& folder) {
    Utils::TellInvalidName(
        "$$$/Vantor/Handlers/ZuProduction/Rename/InvalidNameWarning/Title=Invalid Name",
        "$$$/Vantor/Handlers/ZuProduction/Rename/InvalidNameWarning/Message=A valid name cannot be empty and "
        "cannot contain any of the following characters: \n",
        name, folder);
}

void TellHiddenName(const UTF16String& name) {
    Utils::TellHiddenName(
        "$$$/Vantor/Handlers/ZuProduction/Rename/Hidden/Title=Renamed",
        "$$$/Vantor/Handlers/ZuProduction/Rename/Hidden/Message=“@0” does not show here any more: its name "
        "begins with a dot.",
        name);
}

enum class Outcome {
    Done,
    /// The user has been told why.
    Refused,
    Cancelled
};

Outcome NoteFailure(const FileException& exception) {
    LogException(exception, __PRETTY_FUNCTION__);
    return exception.SystemError() == ECANCELED ? Outcome::Cancelled : Outcome::Refused;
}

Outcome MoveProject(const UTF16String& oldPath, const UTF16String& newPath) {
    try {
        return Utils::MoveProjectAndLockFiles(oldPath, newPath) ? Outcome::Done : Outcome::Refused;
    } catch (const FileException& exception) {
        return NoteFailure(exception);
    }
}

Outcome MoveFolder(const UTF16String& oldPath, const UTF16String& newPath) {
    const ItemOutcome outcome = MoveItems({{oldPath, newPath}}).front();
    if (outcome.mFailure) return NoteFailure(*outcome.mFailure);
    if (outcome.mResult != ItemOutcome::Result::Done) return Outcome::Refused;
    Utils::UpdatePathsOfOpenProjectsAndLockFiles(PathUtils::AddTrailingSlash(oldPath),
                                                 PathUtils::AddTrailingSlash(newPath));
    return Outcome::Done;
}

UTF16String FindNewPath(const UTF16String& oldPath, const UTF16String& newName) {
    return PathUtils::CombinePaths(PathUtils::GetFullDirectoryPart(oldPath), newName);
}

/// Renames an item that no view shows any more.
void GiveName(const UTF16String& oldPath, const UTF16String& newName, bool isProject) {
    const UTF16String newPath = FindNewPath(oldPath, newName);
    const Outcome outcome = isProject ? MoveProject(oldPath, newPath) : MoveFolder(oldPath, newPath);
    if (outcome == Outcome::Done) TellHiddenName(newName);
}

UTF16String DescribeKeptName(const UTF16String& path, const UTF16String& invalidName) {
    return ZString(
        "$$$/Vantor/Handlers/ZuProductionFolder/NameDropped=“@0” keeps its name. “@1” was dropped: @2",
        {Columns::GetPathDisplayName(path), invalidName,
         PathUtils::DescribeInvalidFileName(invalidName, PathUtils::GetFullDirectoryPart(path))});
}

/// Where `path` lies once the folder `from` is called `to`.
UTF16String FollowFolder(const UTF16String& path, const UTF16String& from, const UTF16String& to) {
    return Utils::IsAtOrBelow(path, from) ? to + path.substr(from.size()) : path;
}

}  // namespace

UTF16String SharedProjectsDirectoryView::DescribeWhySelectionIsNotRenamed() const {
    const RowRef row = GetTree()->GetOnlySelectedRow();
    if (row) return Utils::DescribeWhyNotRenamed(GetRowPath(row.get()));
    return ZString(
        "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/RenameOne=Only one item can be renamed at a time.");
}

void SharedProjectsDirectoryView::RenameSelection() {
    const RowVec rows = GetTree()->GetSelectedRows();
    if (rows.empty()) return;
    InstallNameEditText(rows.front());
    Utils::LogUsage("DirectoryTree", "RenameItem");
}

void SharedProjectsDirectoryView::OnRowSingleClickDown(const RowRef&, Point) {
    mRowAwaitingRename = GetTree()->GetOnlySelectedRow();
}

void SharedProjectsDirectoryView::OnRowSingleClickUp(const RowRef& row, Point point) {
    UI_RemoveTimer(GetRenameTimerID(), true);
    if (!row || row != mRowAwaitingRename) return;
    const unsigned column = GetNameColumn();
    const RectT<float> cell = GetTree()->GetCellRect(row.get(), column);
    const RectT<float> text = Columns::GetNameTextRectFromView(row->GetCellView(column));
    const float x = static_cast<float>(point.x) - cell.x - text.x;
    const float y = static_cast<float>(point.y) - cell.y - text.y;
    if (x >= 0 && x < text.width && y >= 0 && y < text.height)
        UI_InstallTimer(kSlowSecondClickSeconds, GetRenameTimerID());
}

bool SharedProjectsDirectoryView::UI_DoTimerNotify(UI_TimerID id) {
    if (id != GetRenameTimerID()) return MediaBrowserDirectoryView::UI_DoTimerNotify(id);
    UI_RemoveTimer(id, true);
    RenameIfAlone(std::exchange(mRowAwaitingRename, {}));
    return true;
}

/// What was selected since is not meant.
void SharedProjectsDirectoryView::RenameIfAlone(const RowRef& row) {
    if (row && GetTree()->GetOnlySelectedRow() == row && DescribeWhySelectionIsNotRenamed().empty())
        InstallNameEditText(row);
}

void SharedProjectsDirectoryView::RenameLater(const RowRef& row) {
    AsyncCallFromMainThread(
        [this, row, lifetime = std::weak_ptr(mLifetime)] {
            if (!lifetime.expired()) RenameIfAlone(row);
        },
        kDeferredRenameSeconds);
}

void SharedProjectsDirectoryView::CancelSlowSecondClick() {
    UI_RemoveTimer(GetRenameTimerID(), true);
    mRowAwaitingRename.reset();
}

unsigned SharedProjectsDirectoryView::GetNameColumn() const {
    return static_cast<unsigned>(std::max(GetHeaderRow()->GetIndexOfColumn(Columns::kNameColumnID), 0));
}

/// The name was not taken: it can be changed without being typed anew, as soon as the editor has gone.
void SharedProjectsDirectoryView::OfferAgain(const UTF16String& path, const UTF16String& typedName) {
    GetRegisteredMainThread()->Queue([this, path, typedName, lifetime = std::weak_ptr(mLifetime)] {
        if (lifetime.expired()) return;
        const RowRef row = GetRowFromPath(path);
        RenameIfAlone(row);
        // Another row's name may be edited by now.
        if (mEdit && row && mEditedRow == row) mEdit->SetValue(typedName);
    });
}

void SharedProjectsDirectoryView::InstallNameEditText(const RowRef& row) {
    if (!row || mIsNameEdited) return;
    CancelSlowSecondClick();
    // A row that nobody sees has no name cell.
    GetTree()->ScrollRowIntoView(row.get(), false, 0, true);
    UpdateRow(row);
    const RectT<float> text = Columns::GetNameTextRectFromView(row->GetCellView(GetNameColumn()));
    const UTF16String name = Columns::GetPathDisplayName(mItems.GetPathOfKind(row));
    const RefPtr<UI_TextEdit> edit = new UI_TextEdit;
    edit->SetFontSize(Columns::GetFontSizeFromCellRect(text));
    edit->SetAccessibleName(
        ZString("$$$/Vantor/Handlers/ZuProductionFolder/Accessible/NewName=New name of “@0”", {name}));
    edit->SetValue(name);
    edit->NotifyWhenEditEnds(Utils::BindCallback(this, &SharedProjectsDirectoryView::OnEditEnds, mLifetime));
    if (!GetTree()->GetCellEditor().Begin(row.get(), GetNameColumn(), edit, text)) return;
    mEditedRow = row;
    mEdit = edit;
    mIsNameEdited = true;
    UpdateHolding();
    EnableKeyboardEvents(false);
}

void SharedProjectsDirectoryView::OnEditEnds(UI_TextEdit& edit, int sessionEnd) {
    mEdit.reset();
    EnableKeyboardEvents(true);
    GetRegisteredMainThread()->Queue([this, lifetime = std::weak_ptr(mLifetime)] {
        if (!lifetime.expired()) UpdateTextEditStatus();
    });
    try {
        OnRowRenameComplete(std::exchange(mEditedRow, {}), sessionEnd, edit.GetValue());
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
}

void SharedProjectsDirectoryView::UpdateTextEditStatus() {
    mIsNameEdited = false;
    UpdateHolding();
}

UTF16String SharedProjectsDirectoryView::FindNewName(const RowRef& row, const UTF16String& typedText,
                                                     std::optional<UTF16String>& invalid) const {
    const UTF16String path = row ? GetRowPath(row.get()) : UTF16String();
    if (path.empty()) return {};
    const UTF16String typedName = Utils::TrimBlanks(typedText);
    const UTF16String name = IsFileRow(row) ? Utils::AddProjectExtension(typedName) : typedName;
    const UTF16String folder = PathUtils::GetFullDirectoryPart(path);
    // The extension counts. With it ".." would be a name, though none that anybody means.
    for (const UTF16String& each : {name, typedName}) {
        if (PathUtils::IsValidFileName(each, folder)) continue;
        invalid = each;
        return {};
    }
    return IsEqualFoldingASCII(name, PathUtils::GetFullFilePart(path)) ? UTF16String() : name;
}

void SharedProjectsDirectoryView::OnRowRenameComplete(const RowRef& row, int sessionEnd,
                                                      const UTF16String& typedText) {
    if (sessionEnd == kEditEnd_Cancelled) return;
    std::optional<UTF16String> invalid;
    const UTF16String name = FindNewName(row, typedText, invalid);
    const UTF16String path = row ? GetRowPath(row.get()) : UTF16String();
    if (invalid) return TellInvalidName(*invalid, PathUtils::GetFullDirectoryPart(path));
    if (name.empty()) return;
    if (IsFileRow(row)) return RenameProjectAndLockFiles(path, name);
    mFolderToRename = {path, name};
    AsyncCallFromMainThread(
        [this, lifetime = std::weak_ptr(mLifetime)] {
            if (lifetime.expired()) return;
            if (const auto folder = std::exchange(mFolderToRename, {}))
                RenameFolder(folder->first, folder->second);
        },
        kFolderRenameSeconds);
}

std::function<void()> SharedProjectsDirectoryView::EndEdit() {
    // The editor has gone already, but not for long enough.
    if (const auto folder = std::exchange(mFolderToRename, {}))
        return [folder] { GiveName(folder->first, folder->second, false); };
    // It may have ended, without anybody having been told.
    const RefPtr<UI_TextEdit> edit = std::exchange(mEdit, {});
    const RowRef row = std::exchange(mEditedRow, {});
    if (!edit) return {};
    GetTree()->GetCellEditor().End();
    const UTF16String typedText = edit->GetValue();
    std::optional<UTF16String> invalid;
    const UTF16String name = FindNewName(row, typedText, invalid);
    const UTF16String path = row ? GetRowPath(row.get()) : UTF16String();
    if (invalid) TellInStatusBar(DescribeKeptName(path, *invalid));
    if (name.empty()) return {};
    return [path, name, isProject = IsFileRow(row)] { GiveName(path, name, isProject); };
}

void SharedProjectsDirectoryView::RenameProjectAndLockFiles(const UTF16String& oldPath,
                                                            const UTF16String& newName) {
    const UTF16String newPath = FindNewPath(oldPath, Utils::AddProjectExtension(newName));
    StateData state = GetCurrentStateData();
    const Outcome outcome = MoveProject(oldPath, newPath);
    if (outcome == Outcome::Refused) OfferAgain(oldPath, PathUtils::GetFilePart(newPath));
    if (outcome != Outcome::Done) return;
    // Who has ended the edit by a click on another row goes on there.
    std::ranges::replace(state.mSelectedRowPaths, oldPath, newPath);
    state.mTopVisibleRowPath.clear();
    mRestorer->RestoreWhenShown(state, newPath);
    TellHiddenName(newName);
}

void SharedProjectsDirectoryView::RenameFolder(const UTF16String& oldPath, const UTF16String& newName) {
    const UTF16String newPath = FindNewPath(oldPath, newName);
    StateData state = GetCurrentStateData();
    const Outcome outcome = MoveFolder(oldPath, newPath);
    if (outcome == Outcome::Refused) OfferAgain(oldPath, newName);
    if (outcome != Outcome::Done) return;
    const auto follow = [&](UTF16String& path) { path = FollowFolder(path, oldPath, newPath); };
    std::ranges::for_each(state.mOpenFolderPaths, follow);
    std::ranges::for_each(state.mSelectedRowPaths, follow);
    follow(state.mTopVisibleRowPath);
    mRestorer->RestoreWhenShown(state, newPath);
    TellHiddenName(newName);
}

}  // namespace HandlerSharedProjects
