#include "host/toolkit/UI_CellEditor.h"

#include <QFontMetrics>
#include <QLineEdit>
#include <algorithm>

#include "desk/core/log/UserNotice.h"
#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/CellEditorImpl.h"
#include "desk/toolkit/KeyPause.h"
#include "desk/toolkit/TextEditImpl.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"
#include "host/core/Localizer.h"

namespace host {

using Impl = UI_CellEditor::Impl;

namespace {

/// From the field's edge to its text.
constexpr int kTextInset = 3;
/// Room behind the text for what is typed next.
constexpr int kRoomToType = 24;
/// In row heights.
constexpr int kMinimumWidth = 4;
constexpr std::chrono::seconds kKeyPause(1);

}  // namespace

bool Impl::Begin(const RowRef& row, int appended, RefPtr<UI_TextEdit> edit, const RectT<float>& place) {
    if (mEdit) desk::TextEditImpl::Of(*mEdit).End(kEditEnd_Committed);
    if (!edit || edit->GetImpl().mParent || appended < 0 || !mTree.mView || !mTree.mView->isVisible() ||
        mTree.IndexOfOpened(row.get()) < 0)
        return false;
    mTree.ScrollIntoView(*row, false, 0, false);
    mRow = row;
    mName = desk::ToUTF16(mTree.NameOf(*row));
    mEdit = std::move(edit);
    mColumn = appended;
    mTextLeft = place.x / float(mTree.mRowPixels);
    Open();
    return true;
}

void Impl::Open() {
    desk::TextEditImpl& edit = desk::TextEditImpl::Of(*mEdit);
    if (edit.mAccessibleName.isEmpty())
        mEdit->SetAccessibleName(ZString("$$$/Desk/Tree/EditorName=New name of @0", {mName}));
    edit.mClose = [this] { Close(); };
    edit.mTyped = [this] {
        mTree.ScrollIntoView(*mRow, false, 0, false);
        Follow();
    };
    edit.Realize(*mTree.mView->viewport());
    Follow();
    edit.Field()->show();
    QWidget::setTabOrder(mTree.mView, edit.Field());
    edit.Field()->setFocus(Qt::OtherFocusReason);
    edit.Begin();
}

void Impl::Close() {
    const RefPtr<UI_TextEdit> edit = std::move(mEdit);
    mEdit.reset();
    mRow.reset();
    desk::TextEditImpl& impl = desk::TextEditImpl::Of(*edit);
    impl.mTyped = {};
    if (impl.Field()->window()->focusWidget() == impl.Field()) mTree.mView->setFocus(Qt::OtherFocusReason);
    impl.DropField();
}

QRect Impl::FindPlace() const {
    const QRect row = mTree.mView->RectOf(mRow.get());
    const QRectF cell = mTree.CellRect(*mRow, mColumn, row);
    const int left = int(cell.left() + double(mTextLeft) * row.height()) - kTextInset;
    const QLineEdit& field = *desk::TextEditImpl::Of(*mEdit).Field();
    const int wanted = field.fontMetrics().horizontalAdvance(field.text()) + kTextInset + kRoomToType;
    const int room = mTree.mView->viewport()->width() - left;
    const int width =
        std::max({int(cell.right()) - left, std::min(wanted, room), kMinimumWidth * row.height()});
    return {left, row.y(), width, row.height()};
}

void Impl::Follow() {
    if (!mEdit) return;
    if (mTree.IndexOfOpened(mRow.get()) < 0) return EndByItself(true);
    desk::TextEditImpl::Of(*mEdit).Field()->setGeometry(FindPlace());
}

void Impl::EndByItself(bool tellsUser) {
    if (!mEdit) return;
    if (tellsUser) TellRowWent();
    desk::PauseKeys(kKeyPause);
    desk::TextEditImpl::Of(*mEdit).End(kEditEnd_Cancelled);
}

void Impl::TellRowWent() const {
    desk::TellUser(
        ZString("$$$/Desk/Tree/EditedRowWent=“@0” went away while its name was edited. The name was "
                "not changed.",
                {mName}));
}

void Impl::Abandon() {
    if (!mEdit) return;
    desk::TextEditImpl& edit = desk::TextEditImpl::Of(*mEdit);
    edit.mIsInSession = false;
    edit.mClose = edit.mTyped = {};
    edit.DropField();
    mEdit.reset();
    mRow.reset();
}

UI_CellEditor::UI_CellEditor(std::unique_ptr<Impl> impl) : mImpl(std::move(impl)) {}
UI_CellEditor::~UI_CellEditor() = default;

bool UI_CellEditor::Begin(UI_MultiColumnTreeRow* row, unsigned column, RefPtr<UI_TextEdit> edit,
                          const RectT<float>& place) {
    return mImpl->Begin(RowRef(row), mImpl->mTree.ColumnAtPosition(column), std::move(edit), place);
}

void UI_CellEditor::End() {
    mImpl->EndByItself(false);
}

RowRef UI_CellEditor::GetRow() const {
    return mImpl->mRow;
}

UI_TextEdit* UI_CellEditor::GetTextEdit() const {
    return mImpl->mEdit.get();
}

}  // namespace host
