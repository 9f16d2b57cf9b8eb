// Rows that are dragged, and what is dropped on them.
#include <algorithm>

#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"
#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "host/core/Localizer.h"
#include "host/core/UserNotice.h"
#include "host/dialogs/MessageBox.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProductionTrash.h"
#include "host/project/ProjectFiles.h"
#include "host/project/SharedProjectsManager.h"
#include "host/toolkit/DataTransfer.h"

namespace HandlerSharedProjects {

namespace {

bool AllFilesAreProjects(const UTF16StringVec& paths) {
    return !paths.empty() && std::ranges::all_of(paths, IsVantorProjectFile);
}

/// What other programs give, on whatever machine.
bool AreAllProjects(const OS_ReceiveData& received) {
    return received.CountOfForeignFiles() == 0 && AllFilesAreProjects(received.GetFilePaths());
}

/// Why it may not leave its folder, as far as is known.
UTF16String DescribeWhyNotMoved(const UTF16String& path) {
    const UTF16String reason = Utils::DescribeWhyForeign(path);
    return reason.empty() ? Utils::DescribeWhyNotRenamed(path) : reason;
}

bool MayMove(const UTF16String& path) {
    return DescribeWhyNotMoved(path).empty();
}

void TellOnlyProjects() {
    const UTF16String title =
        ZString("$$$/Vantor/Handlers/ZuProductionFolder/CanOnlyDropProjectsTitle=Can Only Drop Projects");
    const UTF16String text = ZString(
        "$$$/Vantor/Handlers/ZuProductionFolder/CanOnlyDropProjectsMessage=You can only drop projects into "
        "this panel.");
    MessageBox(title, text);
}

}  // namespace

bool SharedProjectsDirectoryView::OnSelectedRowsDragged(const UI_MouseEvent& event) {
    CancelSlowSecondClick();
    const UTF16StringVec paths = mItems.GetSelectedNonRedundantPaths();
    if (paths.empty()) return false;
    OS_SendData data(event.GetOSEvent());
    // Who takes the rows goes by the files; the type says that they are rows.
    data.PutAsBytes(kDirectoryRowDragType, kDirectoryRowDragType, sizeof(kDirectoryRowDragType) - 1);
    data.PutFiles(paths);
    data.SetPicture(Columns::GetPathDisplayName(paths.front()), paths.size());
    unsigned result = kDragAction_None;
    return data.DoDragAndDrop(kDragAction_Copy | kDragAction_Move, result);
}

bool SharedProjectsDirectoryView::DropSupport(int action, UI_DropData* data) {
    if (!data || !data->mReceived) return false;
    if (action == kDropAction_Dropped) {
        OnDragDrop(*data);
        return true;
    }
    if (action != kDropAction_Entered && action != kDropAction_Moved) return false;
    // Of ten thousand rows it is asked once.
    if (action == kDropAction_Entered) OnDragEnter(*data->mReceived);
    OnDragEnterOrMove(*data);
    return true;
}

void SharedProjectsDirectoryView::OnDragEnter(const OS_ReceiveData& received) {
    const UTF16StringVec& paths = received.GetFilePaths();
    const auto held = std::ranges::find_if_not(paths, MayMove);
    mMayDraggedRowsMove = held == paths.end();
    if (mMayDraggedRowsMove || !received.HasType(kDirectoryRowDragType)) return;
    // Nothing lights up, and the rows may be many.
    TellInStatusBar(DescribeWhyNotMoved(*held));
}

UTF16String SharedProjectsDirectoryView::GetDropDestinationPathFromDropData(const UI_DropData& data) const {
    const UTF16String path = data.mRow ? GetRowPath(data.mRow.get()) : UTF16String();
    if (path.empty()) return PathUtils::ToNormalizedPath(SharedProjectsHandler::GetRootDirectory());
    return IsFileRow(data.mRow) ? PathUtils::ToNormalizedPath(PathUtils::GetFullDirectoryPart(path)) : path;
}

bool SharedProjectsDirectoryView::IsDropValid(const UTF16StringVec& draggedPaths,
                                              const UTF16String& destination) {
    return std::ranges::none_of(draggedPaths, [&](const UTF16String& path) {
        const bool isThere = PathUtils::ToNormalizedPath(PathUtils::GetFullDirectoryPart(path)) == destination;
        return isThere || Utils::IsAtOrBelow(destination, path);
    });
}

void SharedProjectsDirectoryView::OnDragEnterOrMove(const UI_DropData& data) {
    const OS_ReceiveData& received = *data.mReceived;
    const UTF16String destination = GetDropDestinationPathFromDropData(data);
    bool isWelcome = false;
    if (destination.empty())
        isWelcome = false;
    else if (received.HasType(kDirectoryRowDragType))
        isWelcome = mMayDraggedRowsMove && IsDropValid(received.GetFilePaths(), destination);
    else if (received.HasType(kFilesType))
        // Of a mix the user is told when it is dropped.
        isWelcome = IsSharedProjectsManagerActive() &&
                    std::ranges::any_of(received.GetFilePaths(), IsVantorProjectFile);
    GetTree()->ShowDragFeedback(GetRowFromPath(destination).get(), isWelcome);
}

void SharedProjectsDirectoryView::OnDragDrop(const UI_DropData& data) {
    const OS_ReceiveData& received = *data.mReceived;
    const UTF16String destination = GetDropDestinationPathFromDropData(data);
    if (received.HasType(kDirectoryRowDragType)) return DropRows(received.GetFilePaths(), destination);
    if (!received.HasType(kFilesType) || !IsSharedProjectsManagerActive()) return;
    if (!AreAllProjects(received)) return TellOnlyProjects();
    Utils::LogUsage("DirectoryTree", "DragDrop");
    SelectWhenShown(Utils::AddProjectsToZuProductionWithPrompt(received.GetFilePaths(), destination));
}

void SharedProjectsDirectoryView::DropRows(const UTF16StringVec& paths, const UTF16String& destination) {
    if (!std::ranges::all_of(paths, MayMove) || !IsDropValid(paths, destination)) return;
    const bool isToTrash = IsTheZuProductionTrashDirectory(destination);
    Utils::LogUsage("DirectoryTree", isToTrash ? "Trash" : "DragDrop");
    // Nobody who drags goes on from there by keyboard: no other row is selected in their place.
    if (isToTrash) return Utils::MoveToSharedProjectsTrash(paths, false, true);
    Utils::CopyReport report;
    Utils::CopyFiles(paths, destination, true, false, report);
    Utils::TellMoved(report, destination);
    UTF16StringVec newPlaces;
    for (const PlannedItem& item : report.mDone) newPlaces.push_back(item.mDestination);
    if (!newPlaces.empty()) SelectWhenShown(newPlaces);
}

}  // namespace HandlerSharedProjects
