#include "desk/toolkit/TreeClipboard.h"

#include <QApplication>
#include <QClipboard>
#include <QMenuBar>
#include <QMimeData>

#include "desk/core/log/UserNotice.h"
#include "desk/toolkit/Callback.h"
#include "desk/toolkit/DragSource.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"
#include "host/core/Localizer.h"

namespace desk {

namespace {

TreeView* FindTree(const QWidget* view) {
    QWidget* const focus = QApplication::focusWidget();
    if (auto* tree = dynamic_cast<TreeView*>(focus)) return tree;
    if (!view || !qobject_cast<QMenuBar*>(focus)) return nullptr;
    for (QTreeView* child : view->findChildren<QTreeView*>())
        if (auto* tree = dynamic_cast<TreeView*>(child); tree && tree->isVisible()) return tree;
    return nullptr;
}

}  // namespace

bool CanCutRows(const QWidget* view) {
    const TreeView* tree = FindTree(view);
    return tree && tree->CanCut();
}

void CutRows(const QWidget* view) {
    if (TreeView* tree = FindTree(view)) tree->Cut();
}

bool CanPasteOnRows(const QWidget* view) {
    const TreeView* tree = FindTree(view);
    return tree && tree->CanPaste();
}

void PasteOnRows(const QWidget* view) {
    if (TreeView* tree = FindTree(view)) tree->Paste();
}

bool TreeView::CanCut() const {
    return IsSet(mTree.mCallbacks.mRowsDragged) && !mTree.mSelected.IsEmpty();
}

void TreeView::Cut() {
    if (!CanCut()) return;
    const host::RefPtr<host::UI_Node> keptAlive(mTree.mNode);
    host::OS_Event::Impl impl{viewport(), true};
    Call(mTree.mCallbacks.mRowsDragged, host::UI_MouseEvent(host::OS_Event(impl), {}));
}

bool TreeView::CanPaste() const {
    const QMimeData* content = QApplication::clipboard()->mimeData();
    return viewport()->acceptDrops() && content && content->hasFormat(QStringLiteral("text/uri-list"));
}

void TreeView::Paste() {
    if (!CanPaste()) return;
    FlushLayout();
    QClipboard& clipboard = *QApplication::clipboard();
    const std::uint64_t notices = CountNotices();
    if (mDrop.Paste(*clipboard.mimeData(), clipboard.ownsClipboard(), host::RowRef(RowForKeyboard()))) {
        if (clipboard.ownsClipboard()) clipboard.clear();
    } else if (CountNotices() == notices) {
        TellUser(host::ZString(
            "$$$/Desk/Tree/CannotPaste=Nothing was pasted: what was cut or copied cannot go there."));
    }
}

}  // namespace desk
