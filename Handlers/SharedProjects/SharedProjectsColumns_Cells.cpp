#include <algorithm>

#include "Handlers/SharedProjects/SharedProjectsColumns.h"
#include "host/core/DebugDatabase.h"
#include "host/core/Localizer.h"
#include "host/mediabrowser/MediaBrowserMultiColumnTree.h"
#include "host/project/OpenProjects.h"
#include "host/project/ProductionTrash.h"
#include "host/project/ProjectFiles.h"
#include "host/toolkit/Bitmap.h"
#include "host/toolkit/UI_StaticImage.h"
#include "host/toolkit/UI_StaticText.h"

namespace HandlerSharedProjects::Columns {

namespace {

const CachedDatabaseValue<float> sNameColumnSpaceBetweenThumbAndNameDBValue{
    "SharedProjects.Columns.Name.SpaceBetweenThumbAndName", 10.0f};
const CachedDatabaseValue<float> sThumbHeightFractionDBValue{
    "SharedProjects.Columns.Name.Thumb.Height.FractionOfRowHeight", 0.6f};
const CachedDatabaseValue<float> sFontSizeFractionOfCellHeightDBValue{
    "SharedProjects.FontSize.FractionOfCellHeight", 0.5f};

constexpr float kMinimumLabelWidth = 10.0f;
constexpr int kFolderPictureSize = 256;

/// One picture for all name cells, made when it is first needed.
PictureRef sGenericFolderIcon;

PictureRef GetSharedFolderPicture() {
    if (!sGenericFolderIcon)
        sGenericFolderIcon =
            GetGenericFolderIcon(GetDefaultDrawSupplier(), kFolderPictureSize, kFolderPictureSize);
    return sGenericFolderIcon;
}

const char* GetDecalName(IconState state) {
    switch (state) {
        case IconState::Folder:
            break;
        case IconState::Trash:
            return kHistoryActionDeleteDecal;
        case IconState::ClosedNoLock:
            return kZuProductionPanelProjectClosedNoLockDecal;
        case IconState::ClosedLocked:
            return kZuProductionPanelProjectClosedLockedDecal;
        case IconState::OpenNoLock:
            return kZuProductionPanelProjectOpenNoLockDecal;
        case IconState::OpenLocked:
            return kZuProductionPanelProjectOpenLockedDecal;
        case IconState::OpenEditable:
            return kZuProductionPanelProjectOpenEditableDecal;
    }
    return nullptr;
}

/// The name, with the mark that a tab's title has for unsaved changes.
UTF16String GetLabel(const UTF16String& path) {
    ProjectRef project;
    const bool isUnsaved = IsProjectOpen(path, project) && project->IsDirty();
    return GetShownName(path) + (isUnsaved ? u" •" : u"");
}

/// Icon and name of a row.
class NameCellView final : public UI_SubView {
public:
    NameCellView(const UTF16String& path, IconState state);

    RectT<float> GetNameTextRect() const { return mText->UI_GetBounds(); }

private:
    void GetIcon(UI_ImageSupplyMessage& message) const;
    void UI_SizeChanged(const RectT<float>& cell) override;

    RefPtr<UI_StaticImage> mImage;
    RefPtr<UI_StaticText> mText;
    Bitmap mBitmap;
    PictureRef mFolderPicture;
};

NameCellView::NameCellView(const UTF16String& path, IconState state) {
    UI_SetNodeID("SharedProjects.NameCellView." + UTF16to8(GetPathDisplayName(path)));
    if (const char* decal = GetDecalName(state))
        mBitmap = Bitmap::GetBitmap(decal, GetDefaultDrawSupplier());
    else
        mFolderPicture = GetSharedFolderPicture();
    mImage = new UI_StaticImage;
    mImage->SetImageSupplyFunction([this](UI_ImageSupplyMessage& message) { GetIcon(message); });
    AddChild(mImage);
    mText = new UI_StaticText(GetLabel(path));
    if (Utils::IsRefreshable(path)) mText->SetFontStyle("Italic");
    AddChild(mText);
}

void NameCellView::GetIcon(UI_ImageSupplyMessage& message) const {
    message.SetStateFlags(message.GetStateFlags() | kImageStateEnabled);
    if (mBitmap.IsValid())
        mBitmap.FillPictureSupplyMessage(message, "");
    else if (mFolderPicture)
        message.SupplyPicture(mFolderPicture);
}

void NameCellView::UI_SizeChanged(const RectT<float>& cell) {
    const float side = cell.height * sThumbHeightFractionDBValue.Get();
    const RectT<float> icon{cell.x, (cell.height - side) / 2, side, side};
    mImage->UI_SetBounds(icon);
    const float labelX = icon.Right() + sNameColumnSpaceBetweenThumbAndNameDBValue.Get();
    const RectT<float> label{labelX, cell.y, std::max(cell.width - labelX, kMinimumLabelWidth), cell.height};
    mText->SetFontSize(GetFontSizeFromCellRect(label));
    mText->UI_SetBounds(label);
}

UTF16String GetAccessibleName(const UTF16String& path, const FileMetadata* metadata) {
    UTF16String text = GetShownName(path);
    if (!IsVantorProjectFile(path))
        return IsTheZuProductionTrashDirectory(path)
                   ? ZString("$$$/Vantor/Handlers/ZuProductionFolder/Accessible/Trash=@0, trash", {text})
                   : ZString("$$$/Vantor/Handlers/ZuProductionFolder/Accessible/Folder=@0, folder", {text});
    ProjectRef project;
    if (IsProjectOpen(path, project)) {
        text = ZString("$$$/Vantor/Handlers/ZuProductionFolder/Accessible/Open=@0, open", {text});
        if (project->IsDirty())
            text = ZString("$$$/Vantor/Handlers/ZuProductionFolder/Accessible/Unsaved=@0, unsaved changes",
                           {text});
        if (project->IsReadOnly())
            text = ZString("$$$/Vantor/Handlers/ZuProductionFolder/Accessible/ReadOnly=@0, read-only", {text});
        if (Utils::IsRefreshable(path))
            text =
                ZString("$$$/Vantor/Handlers/ZuProductionFolder/Accessible/OutOfDate=@0, out of date", {text});
    }
    if (!metadata || !metadata->mLocked) return text;
    if (metadata->mLockedBy.empty())
        return ZString("$$$/Vantor/Handlers/ZuProductionFolder/Accessible/Locked=@0, locked", {text});
    return ZString("$$$/Vantor/Handlers/ZuProductionFolder/Accessible/LockedBy=@0, locked by @1",
                   {text, metadata->mLockedBy});
}

}  // namespace

IconState GetIconState(const UTF16String& path, std::optional<bool> lockState) {
    if (path.empty()) return IconState::Folder;
    if (!IsVantorProjectFile(path))
        return IsTheZuProductionTrashDirectory(path) ? IconState::Trash : IconState::Folder;
    if (!IsProjectOpen(path)) return lockState ? IconState::ClosedLocked : IconState::ClosedNoLock;
    if (!lockState) return IconState::OpenNoLock;
    return *lockState ? IconState::OpenEditable : IconState::OpenLocked;
}

void AddNameCellView(const UI_MultiColumnTree& tree, const RowRef& row, const UTF16String& path,
                     std::optional<bool> lockState) {
    if (!tree.IsRowVisible(row.get())) return;
    const int column = tree.GetHeaderRow()->GetIndexOfColumn(kNameColumnID);
    if (column < 0) return;
    UI_Container* cell = row->GetCellView(static_cast<unsigned>(column));
    if (!cell) return;
    cell->RemoveAllChildren();
    const RefPtr<NameCellView> view = new NameCellView(path, GetIconState(path, lockState));
    cell->AddChild(view);
    const RectT<float> bounds = cell->UI_GetBounds();
    view->UI_SetBounds({0, 0, bounds.width, bounds.height});
}

RectT<float> GetNameTextRectFromView(const UI_Container* cellView) {
    if (!cellView) return {};
    for (const RefPtr<UI_Node>& child : cellView->GetChildren())
        if (const auto* view = dynamic_cast<const NameCellView*>(child.get())) return view->GetNameTextRect();
    return {};
}

float GetFontSizeFromCellRect(const RectT<float>& cell) {
    return cell.height * sFontSizeFractionOfCellHeightDBValue.Get();
}

void DrawMetadataCellOfRow(Drawbot& drawbot, const FileMetadata& metadata, unsigned columnIndex,
                           const RectT<float>& cell, const HeaderRowRef& headerRow) {
    const ColumnID column = headerRow->GetColumnAt(columnIndex);
    if (column == kNameColumnID) return;
    MediaBrowserMultiColumnTree::DrawCellText(drawbot, metadata.GetColumnDisplayString(column), cell, {0, 0},
                                              GetFontSizeFromCellRect(cell),
                                              headerRow->GetColumnAlignment(column));
}

UTF16String GetCellAccessibleText(const HeaderRowRef& headerRow, unsigned columnIndex, const UTF16String& path,
                                  const FileMetadata* metadata) {
    const ColumnID column = headerRow->GetColumnAt(columnIndex);
    if (column == kNameColumnID) return GetAccessibleName(path, metadata);
    if (!metadata) return {};
    if (column == kLockedColumnID && metadata->mLockedBy.empty())
        return Localizer::Get()->Localize(
            metadata->mLocked ? "$$$/Vantor/Handlers/ZuProductionFolder/Accessible/LockedByUnknown=Locked"
                              : "$$$/Vantor/Handlers/ZuProductionFolder/Accessible/NotLocked=Not locked");
    return metadata->GetColumnDisplayString(column);
}

void ClearGenericFolderIcon() {
    sGenericFolderIcon.reset();
}

}  // namespace HandlerSharedProjects::Columns
