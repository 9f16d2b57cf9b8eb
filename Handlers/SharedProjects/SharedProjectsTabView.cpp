#include "Handlers/SharedProjects/SharedProjectsTabView.h"

#include <utility>

#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "host/core/DebugDatabase.h"
#include "host/core/Localizer.h"
#include "host/core/Logging.h"
#include "host/files/PathUtils.h"
#include "host/framework/CommandIdentifiers.h"
#include "host/framework/DC.h"
#include "host/framework/Identifiers.h"
#include "host/framework/ShortcutManager.h"
#include "host/project/ProductionItems.h"
#include "host/project/SharedProjectsManager.h"
#include "host/toolkit/Bitmap.h"

namespace HandlerSharedProjects {

namespace {

constexpr double kPanelClosedCommandDelaySeconds = 0.25;
constexpr double kFrameSeconds = 0.016;
constexpr unsigned kSearchBoxCookie = 1397773154;
constexpr int kSliderToolTipDelayMilliseconds = 400;

UTF16String Localize(const char* key) {
    return Localizer::Get()->Localize(key);
}

/// What tells the tool bar's buttons apart.
struct ButtonDescription {
    int mCommandID;
    const char* mDecal;
    const char* mToolTip;
    const char* mStatusBarText;
};

constexpr ButtonDescription kNewProjectButton{
    CommandID::kNewProject, kZuProductionPanelNewProjectButtonDecal,
    "$$$/Vantor/Handlers/ZuProductionFolder/NewProjectButtonToolTip=New Project",
    "$$$/Vantor/Handlers/ZuProductionFolder/NewProjectButtonStatusText=Create a new project"};
constexpr ButtonDescription kNewFolderButton{
    CommandID::kNewFolder, kProjectNewFolderNormalDecal,
    "$$$/Vantor/Handlers/ZuProductionFolder/NewFolderButtonToolTip=New Folder",
    "$$$/Vantor/Handlers/ZuProductionFolder/NewFolderButtonStatusText=Create a new folder"};
constexpr ButtonDescription kTrashButton{
    CommandID::kMoveToTrash, kProjectDeleteNormalDecal,
    "$$$/Vantor/Handlers/ZuProductionFolder/TrashButtonToolTip=Move to Trash",
    "$$$/Vantor/Handlers/ZuProductionFolder/DeleteButton=Delete the currently selected items"};

void CreateButton(PictureButton& button, View& parent, const Rect& bounds,
                  const ButtonDescription& description) {
    button.Create(parent, description.mCommandID, bounds,
                  Bitmap::GetBitmap(description.mDecal, GetDefaultDrawSupplier()));
    button.SetToolTipText(Localize(description.mToolTip));
    button.SetStatusBarText(Localize(description.mStatusBarText));
    button.Enable(false);
    button.Show(true);
}

}  // namespace

SharedProjectsTabView::SharedProjectsTabView(Commander* parent)
    : TabView(parent), mTreeView(std::make_shared<SharedProjectsTreeView>(this)) {}

SharedProjectsTabView::~SharedProjectsTabView() {
    Destroy();
}

void SharedProjectsTabView::FinishCreateSelf(const Rect& bounds) {
    try {
        TabView::FinishCreateSelf(bounds);
        mQueuedControlUpdate = new QueueOnlyOnce(GetRegisteredMainThread(), [weakSelf = weak_from_this()] {
            const auto self = weakSelf.lock();
            if (self && self->IsCreated()) self->UpdateControlEnabledStates();
        });
        SetHostsToolkitChildViews(true);
        EnableDoubleBuffering(true);
        CreateTreeView(bounds);
        UpdateBaseColumnWidthMapForAllColumns(mTreeView->GetDirectoryView()->GetHeaderRow());
        InstallHostFunctions();
        CreateSearchBox(bounds);
        CreateSelectionCount(bounds);
        CreateZoomSlider(bounds);
        CreateButtons(bounds);
        AddListener(kStation_ZuProductionFolderPanel, this);
        AddListener(kStation_DebugDatabase, this);
        AddListener(kBackendProjectActivationStationID, this);
        LoadGlobalStateData();
        UpdateViewsFromZoomAmount();
        UpdateControlEnabledStates();
        UpdateTabName();
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
}

void SharedProjectsTabView::CreateTreeView(const Rect& bounds) {
    mTreeView->Init(shared_from_this(), std::make_shared<MediaBrowserContentManager>());
    mTreeView->Create(*this, GetDirectoryViewBounds(bounds));
    AddListener(mTreeView->GetDirectoryView()->GetStationID(), this);
}

void SharedProjectsTabView::InstallHostFunctions() {
    Scripting::SetTryToMoveToSharedProjectsTrashFn([weakSelf = weak_from_this()](const UTF16StringVec& paths) {
        if (const auto self = weakSelf.lock()) self->TryToMoveToSharedProjectsTrash(paths);
    });
    SetSharedProjectsNotifyPauseFn([weakSelf = weak_from_this()](bool pause) {
        const auto self = weakSelf.lock();
        if (self && self->AreTreeViewsCreated()) self->mTreeView->SetPauseUpdates(pause);
    });
}

void SharedProjectsTabView::RemoveHostFunctions() {
    SetSharedProjectsNotifyPauseFn({});
    Scripting::SetTryToMoveToSharedProjectsTrashFn({});
}

void SharedProjectsTabView::CreateSearchBox(const Rect& bounds) {
    mSearchBox.Create(*this, GetSearchBoxBounds(bounds), true);
    mSearchBox.SetCookie(kSearchBoxCookie);
    AddListener(mSearchBox.GetStationID(), this);
    mSearchBox.SetToolTipText(Localize("$$$/Vantor/Handlers/ZuProductionFolder/Find=Find"));
    mSearchBox.Show(true);
}

void SharedProjectsTabView::CreateSelectionCount(const Rect& bounds) {
    mSelectionCount = new UI_StaticText;
    mSelectionCount->UI_SetNodeID("ZuProduction.SelectionCount");
    GetToolkitContainer()->AddChild(mSelectionCount);
    mSelectionCount->SetAlignment(UI_Alignment::Left);
    mSelectionCount->UI_SetBounds(Utils::ToToolkitRect(GetSelectionCountBounds(bounds)));
    UpdateSelectionCount();
}

void SharedProjectsTabView::CreateZoomSlider(const Rect& bounds) {
    using Self = SharedProjectsTabView;
    mZoomSlider = new UI_Slider(UI_Direction::Horizontal, true);
    mZoomSlider->UI_SetNodeID("ZuProduction.ZoomSlider");
    mZoomSlider->NotifyWhenChanged(Utils::BindCallback(this, &Self::OnZoomSliderChanged, weak_from_this()));
    mZoomSlider->NotifyWhenChangedInteractively(
        Utils::BindCallback(this, &Self::OnZoomSliderChanging, weak_from_this()));
    GetToolkitContainer()->AddChild(mZoomSlider);
    mZoomSlider->SetRange(0.0, 1.0);
    mZoomSlider->SetValue(0.0);
    ApplySliderTunables();
    mZoomSlider->SetToolTipText(
        Localize("$$$/Vantor/Handlers/ZuProductionFolder/ZoomSliderToolTip=Adjust size of text and icons"),
        kSliderToolTipDelayMilliseconds);
    mZoomSlider->UI_SetBounds(Utils::ToToolkitRect(GetZoomSliderBounds(bounds)));
}

void SharedProjectsTabView::CreateButtons(const Rect& bounds) {
    CreateButton(mNewProjectButton, *this, GetNewProjectButtonBounds(bounds), kNewProjectButton);
    CreateButton(mNewFolderButton, *this, GetNewFolderButtonBounds(bounds), kNewFolderButton);
    CreateButton(mTrashButton, *this, GetTrashButtonBounds(bounds), kTrashButton);
    mTrashButton.SetDragSupportFxn(
        Utils::BindCallback(this, &SharedProjectsTabView::DropToDeleteButtonSupport, weak_from_this()));
    ApplyButtonTunables();
}

void SharedProjectsTabView::DestroySelf() {
    try {
        if (const auto giveName = EndEdit()) giveName();
        SaveGlobalStateData();
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
    RemoveListener(kStation_DebugDatabase, this);
    RemoveListener(kStation_ZuProductionFolderPanel, this);
    RemoveListener(kBackendProjectActivationStationID, this);
    PostMessageToUIThread(kStation_WindowClosing,
                          std::make_shared<HandlerWindowClosingMessage>(kZuProductionFolderHandlerID), false);
    mNewFolderButton.Destroy();
    mNewProjectButton.Destroy();
    mTrashButton.Destroy();
    RemoveListener(mSearchBox.GetStationID(), this);
    mSearchBox.Destroy();
    RemoveHostFunctions();
    if (const SharedProjectsDirectoryView* directoryView = mTreeView->GetDirectoryView())
        RemoveListener(directoryView->GetStationID(), this);
    mTreeView->Destroy();
    TabView::DestroySelf();
    if (OpenProjectCount() == 0)
        AsyncCallFromMainThread([] { PostCommand(CommandID::kPanelClosedWithoutProjects, false); },
                                kPanelClosedCommandDelaySeconds);
}

std::function<void()> SharedProjectsTabView::EndEdit() const {
    return AreTreeViewsCreated() ? mTreeView->GetDirectoryView()->EndEdit() : std::function<void()>();
}

void SharedProjectsTabView::ListenToMessage(const Message& message) {
    if (MessageCast<MediaBrowserDirectoryViewRowDisclosureChanged>(message)) {
        OnTreeChanged();
    } else if (MessageCast<ValueChangedMessage>(message)) {
        OnEditTextValueChanged();
    } else if (MessageCast<SearchBoxLeftMessage>(message)) {
        OnSearchBoxLeft();
    } else if (MessageCast<DirectoryViewSelectionChangedMessage>(message)) {
        OnSelectionChanged();
    } else if (MessageCast<ZuProductionFolderOpenedMessage>(message)) {
        OnProductionOpened();
    } else if (MessageCast<ZuProductionFolderClosedMessage>(message)) {
        OnProductionClosed();
    } else if (MessageCast<DebugDatabaseChangedMessage>(message)) {
        OnDebugDatabaseChanged();
    } else if (MessageCast<ProjectOpenedMessage>(message) || MessageCast<ProjectClosedMessage>(message) ||
               MessageCast<ReadOnlyStateChangedMessage>(message)) {
        UpdateControlEnabledStatesLater();
    }
}

void SharedProjectsTabView::OnProductionOpened() {
    // The one that shows already keeps what the user has done with it.
    if (mShownProduction != SharedProjectsHandler::GetRootDirectory()) LoadGlobalStateData();
    UpdateControlEnabledStates();
    UpdateTabName();
}

void SharedProjectsTabView::OnProductionClosed() {
    // Hits of a production that is closed lead nowhere.
    mSearchBox.SetText({});
    UpdateControlEnabledStates();
    UpdateTabName();
}

void SharedProjectsTabView::OnDebugDatabaseChanged() {
    if (!AreTreeViewsCreated()) return;
    ApplySliderTunables();
    ApplyButtonTunables();
    SharedProjectsItemTree* const trees[] = {&mTreeView->GetDirectoryView()->GetItems(),
                                             &mTreeView->GetSearchResultsView()->GetItems()};
    for (SharedProjectsItemTree* items : trees) Columns::SetColumnMinimumWidths(items->GetHeaderRow());
    UpdateViewsFromZoomAmount();
    for (SharedProjectsItemTree* items : trees) items->UpdateOpenRows();
}

void SharedProjectsTabView::OnEditTextValueChanged() {
    const UTF16String text = mSearchBox.GetText();
    if (text == mPreviousSearchText || !AreTreeViewsCreated()) return;
    mTreeView->GetSearchResultsView()->Find(text);
    mPreviousSearchText = text;
    mTreeView->SetView(text.empty() ? TreeViewType::DirectoryView : TreeViewType::SearchResultsView);
    ForgetWhySelectionStays();
    UpdateControlEnabledStates();
    UpdateSelectionCount();
}

/// Where the keyboard goes on, something is selected.
void SharedProjectsTabView::OnSearchBoxLeft() {
    SharedProjectsItemTree* items = GetShownItems();
    if (!items || items->CountSelectedRows() > 0) return;
    if (mTreeView->GetViewType() == TreeViewType::SearchResultsView)
        mTreeView->GetSearchResultsView()->SelectFirstHit();
    else
        items->MoveHome();
}

void SharedProjectsTabView::OnSelectionChanged() {
    ForgetWhySelectionStays();
    UpdateControlEnabledStates();
    UpdateSelectionCount();
}

void SharedProjectsTabView::OnTreeChanged() {
    ForgetWhySelectionStays();
    if (std::exchange(mIsTreeChangeQueued, true)) return;
    AsyncCallFromMainThread(
        [weakSelf = weak_from_this()] {
            if (const auto self = weakSelf.lock()) self->FollowTreeChange();
        },
        kFrameSeconds);
}

void SharedProjectsTabView::FollowTreeChange() {
    mIsTreeChangeQueued = false;
    if (!IsCreated()) return;
    UpdateSelectionCount();
    UpdateStackedDimensions(true);
    UpdateControlEnabledStates();
}

void SharedProjectsTabView::UpdateControlEnabledStatesLater() {
    ForgetWhySelectionStays();
    if (mQueuedControlUpdate) mQueuedControlUpdate->Queue();
}

bool SharedProjectsTabView::AreTreeViewsCreated() const {
    return mTreeView && mTreeView->IsCreated() && mTreeView->GetDirectoryView() &&
           mTreeView->GetSearchResultsView();
}

SharedProjectsItemTree* SharedProjectsTabView::GetShownItems() const {
    return AreTreeViewsCreated() ? &mTreeView->GetShownItems() : nullptr;
}

std::size_t SharedProjectsTabView::CountSelectedRows() const {
    const SharedProjectsItemTree* items = GetShownItems();
    return items ? items->CountSelectedRows() : 0;
}

UTF16StringVec SharedProjectsTabView::GetSelectedPaths() const {
    const SharedProjectsItemTree* items = GetShownItems();
    return items ? items->GetSelectedPaths() : UTF16StringVec();
}

UTF16StringVec SharedProjectsTabView::GetSelectedNonRedundantPaths() const {
    const SharedProjectsItemTree* items = GetShownItems();
    return items ? items->GetSelectedNonRedundantPaths() : UTF16StringVec();
}

void SharedProjectsTabView::UpdateTabName() {
    const UTF16String root = SharedProjectsHandler::GetRootDirectory();
    if (root.empty())
        SetTitle(Localize("$$$/Vantor/Handlers/ZuProductionFolder/TabTitleWhenNoProductionIsOpen=Production"));
    else
        SetTitle(Localize("$$$/Vantor/Handlers/ZuProductionFolder/TabTitlePrefix=Production: ") +
                 Columns::GetPathDisplayName(PathUtils::AddTrailingSlash(root)));
}

void SharedProjectsTabView::UpdateControlEnabledStates() {
    const bool isProductionOpen = !SharedProjectsHandler::GetRootDirectory().empty();
    const auto follow = [&](PictureButton& button, int commandID) {
        bool enabled = false;
        bool checked = false;
        MenuMark mark = MenuMark::None;
        UTF16String text;
        button.Enable(isProductionOpen && FindCommandStatus(commandID, enabled, checked, mark, text) &&
                      enabled);
    };
    follow(mNewProjectButton, CommandID::kNewProject);
    follow(mNewFolderButton, CommandID::kNewFolder);
    follow(mTrashButton, CommandID::kMoveToTrash);
    mSearchBox.Enable(isProductionOpen);
    if (mZoomSlider) mZoomSlider->Enable(isProductionOpen);
}

void SharedProjectsTabView::PaintSelf(DC& dc) {
    const Rect bounds = GetBounds();
    dc.FillRect({0, 0, bounds.width, bounds.height}, ColorManager::GetColor(kColor_WindowBackground), 255);
}

void SharedProjectsTabView::NowOnDuty() {
    TabView::NowOnDuty();
    ShortcutManager::Instance()->ApplyContext(SharedProjectsHandler::sContextName, false);
}

bool SharedProjectsTabView::AllowTablessSelf() const {
    return false;
}

const char* SharedProjectsTabView::GetFlyoutMenuID() const {
    return kFlyoutMenuID;
}

}  // namespace HandlerSharedProjects
