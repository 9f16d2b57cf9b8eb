// Context menus, and the keys that the view itself answers.
#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"
#include "Handlers/SharedProjects/SharedProjectsStateRestorer.h"
#include "host/core/Localizer.h"
#include "host/core/UserNotice.h"
#include "host/toolkit/UI_KeyboardEvent.h"

namespace HandlerSharedProjects {

bool SharedProjectsDirectoryView::OnRowContextMenu(const RowRef& row, Point point) {
    CancelSlowSecondClick();
    mItems.SelectForContextMenu(row);
    if (!row) {
        HandleContextMenuNoSelection(point);
        return true;
    }
    const int types = mItems.GetSelectedTypes();
    const bool areMixed = (types & Utils::kPathTypeFile) && (types & Utils::kPathTypeFolder);
    if (types & Utils::kPathTypeTrashFolder)
        HandleContextMenuTrash(point);
    else if (types & Utils::kPathTypeInTrash)
        TellInStatusBar(ZString(
            "$$$/Vantor/Handlers/ZuProductionFolder/NoMenuInTrash=There is no menu for what is in the trash. "
            "Drag it to another folder to use it again."));
    else if (areMixed)
        HandleContextMenuMixed(point);
    else if (types & Utils::kPathTypeFile)
        HandleContextMenuProject(point);
    else if (types & Utils::kPathTypeFolder)
        HandleContextMenuDirectory(point);
    return true;
}

void SharedProjectsDirectoryView::HandleContextMenuNoSelection(Point point) {
    mItems.TrackContextMenu("HandlerSharedProjects_Context_Menu_NoSelection", point);
}

void SharedProjectsDirectoryView::HandleContextMenuProject(Point point) {
    mItems.TrackContextMenu("HandlerSharedProjects_Context_Menu_Project", point);
}

void SharedProjectsDirectoryView::HandleContextMenuDirectory(Point point) {
    mItems.TrackContextMenu("HandlerSharedProjects_Context_Menu_Folder", point);
}

void SharedProjectsDirectoryView::HandleContextMenuMixed(Point point) {
    mItems.TrackContextMenu("HandlerSharedProjects_Context_Menu_MixedSelection", point);
}

void SharedProjectsDirectoryView::HandleContextMenuTrash(Point point) {
    mItems.TrackContextMenu("HandlerSharedProjects_Context_Menu_Trash", point);
}

bool SharedProjectsDirectoryView::UI_DoKeyboardEvent(UI_Node* node, const UI_KeyboardEvent& event) {
    if (!AreKeyboardEventsEnabled()) return false;
    const int key = event.GetCode();
    if (key == kKey_Escape && !mFolderOpener.IsIdle()) {
        mRestorer->Stop();
        return true;
    }
    const bool isRename = (key == kKey_Return || key == kKey_Enter) && event.GetModKey() == 0;
    if (!isRename || !IsOneVisibleRowSelected())
        return MediaBrowserDirectoryView::UI_DoKeyboardEvent(node, event);
    const UTF16String reason = DescribeWhySelectionIsNotRenamed();
    reason.empty() ? RenameSelection() : TellInStatusBar(reason);
    return true;
}

bool SharedProjectsDirectoryView::IsOneVisibleRowSelected() const {
    return GetTree()->IsRowVisible(GetTree()->GetOnlySelectedRow().get());
}

}  // namespace HandlerSharedProjects
