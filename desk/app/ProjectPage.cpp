#include "desk/app/ProjectPage.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QLabel>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTextCursor>
#include <QTextDocument>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "desk/app/ProgramCommands.h"
#include "desk/app/ProjectNotice.h"
#include "desk/app/ProjectTexts.h"
#include "desk/core/edges/Services.h"
#include "desk/core/language/Localized.h"
#include "desk/core/names/QtStrings.h"
#include "desk/framework/MenuResources.h"
#include "desk/project/lock/LockHolder.h"
#include "desk/project/lock/LockTexts.h"
#include "desk/toolkit/Theme.h"
#include "host/core/Localizer.h"

namespace desk {
namespace {

constexpr int kMargin = 14;
constexpr int kTabWidth = 4;

/// Tab is a character of the text. F6 leaves it, and Ctrl+Tab where there is no other project to go to; with
/// Shift backwards.
class ProjectEditor : public QPlainTextEdit {
protected:
    void keyPressEvent(QKeyEvent* event) override {
        const bool isTab = event->key() == Qt::Key_Tab || event->key() == Qt::Key_Backtab;
        const bool isControl = event->modifiers() & Qt::ControlModifier;
        const bool isLeaving = event->key() == Qt::Key_F6 || (isTab && isControl && !HasOtherTabs());
        if (!isLeaving) return QPlainTextEdit::keyPressEvent(event);
        QAbstractScrollArea::focusNextPrevChild(!(event->modifiers() & Qt::ShiftModifier));
        event->accept();
    }

private:
    bool HasOtherTabs() const {
        const QWidget* widget = parentWidget();
        while (widget && !qobject_cast<const QTabWidget*>(widget)) widget = widget->parentWidget();
        return widget && static_cast<const QTabWidget*>(widget)->count() > 1;
    }
};

QPlainTextEdit* MakeEditor() {
    auto* editor = new ProjectEditor;
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(QFontInfo(editor->font()).pixelSize());
    editor->setFont(font);
    editor->setTabStopDistance(kTabWidth * QFontMetricsF(font).horizontalAdvance(QLatin1Char(' ')));
    editor->setLineWrapMode(QPlainTextEdit::NoWrap);
    editor->document()->setDocumentMargin(kMargin);
    // The program's own menu, in the program's language.
    editor->setContextMenuPolicy(Qt::CustomContextMenu);
    QObject::connect(editor, &QWidget::customContextMenuRequested, editor, [editor](QPoint point) {
        const QPoint screen = editor->viewport()->mapToGlobal(point);
        MenuResources::Instance().Track("ProductionDesk_Editor_Menu", *editor, screen.x(), screen.y());
    });
    return editor;
}

/// A text that nobody may change can still be selected and copied by keyboard.
void LetEdit(QPlainTextEdit& editor, bool isAllowed) {
    editor.setTextInteractionFlags(isAllowed ? Qt::TextEditorInteraction
                                             : Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

QLabel* MakeFact(double scale, bool isSecondary) {
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    QFont font = label->font();
    font.setPixelSize(qRound(QFontInfo(font).pixelSize() * scale));
    label->setFont(font);
    if (isSecondary) label->setForegroundRole(QPalette::PlaceholderText);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    return label;
}

}  // namespace

ProjectPage::ProjectPage(ProjectDocumentRef document)
    : mDocument(std::move(document)),
      mReadOnly(new ProjectNotice(this)),
      mOutOfDate(new ProjectNotice(this)),
      mLockLost(new ProjectNotice(this)),
      mTrouble(new ProjectNotice(this)),
      mRecovered(new ProjectNotice(this)),
      mContent(new QStackedWidget),
      mEditor(MakeEditor()),
      mKind(MakeFact(1.3, false)),
      mFile(MakeFact(1, true)) {
    MakeNotices();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    for (QWidget* part :
         std::initializer_list<QWidget*>{mLockLost, mTrouble, mReadOnly, mOutOfDate, mRecovered})
        layout->addWidget(part);
    layout->addWidget(mContent, 1);
    mContent->addWidget(mEditor);
    mContent->addWidget(MakeFacts());
    setFocusPolicy(Qt::StrongFocus);
    UpdateContent();
    connect(mEditor->document(), &QTextDocument::modificationChanged, this, [this](bool isModified) {
        if (!mIsTakingText) mDocument->SetDirty(isModified);
    });
    connect(mEditor->document(), &QTextDocument::contentsChanged, this, [this] { mDocument->NoteEdit(); });
    mDocument->SetTextSource([this] { return ToUTF16(mEditor->document()->toRawText()); });
}

ProjectPage::~ProjectPage() {
    if (!mHasLeft) Leave();
}

void ProjectPage::Leave() {
    mHasLeft = true;
    mEditor->document()->disconnect(this);
    mDocument->SetTextSource({});
}

bool ProjectPage::ShowsText() const {
    return mContent->currentWidget() == mEditor;
}

QWidget* ProjectPage::MakeFacts() {
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->addStretch(2);
    layout->addWidget(mKind);
    layout->addWidget(mFile);
    layout->addStretch(3);
    return page;
}

void ProjectPage::MakeNotices() {
    mLockLost->AddButton("$$$/Desk/Projects/SwitchToReadWrite=Switch to Read-Write", kCommandToggleReadOnly);
    mLockLost->AddButton("$$$/Desk/Commands/SaveAsCopy=Save as Copy…", kCommandSaveProjectAsCopy);
    mTrouble->AddButton("$$$/Desk/Commands/SaveAsCopy=Save as Copy…", kCommandSaveProjectAsCopy);
    mReadOnly->AddButton("$$$/Desk/Projects/SwitchToReadWrite=Switch to Read-Write", kCommandToggleReadOnly);
    mReadOnly->AddButton("$$$/Desk/Commands/BreakLock=Break Lock…", kCommandBreakLock);
    mOutOfDate->SetText(Localized("$$$/Desk/Projects/OutOfDateText=The file has changed on disk."));
    mOutOfDate->AddButton("$$$/Desk/Commands/Reload=Reload", kCommandReloadProject);
    mRecovered->AddButton("$$$/Desk/Commands/SaveAsCopy=Save as Copy…", kCommandSaveProjectAsCopy);
}

void ProjectPage::UpdateContent() {
    const ProjectContent& content = mDocument->GetContent();
    const bool isText = mDocument->IsEditable();
    mContent->setCurrentIndex(isText ? 0 : 1);
    setFocusProxy(isText ? mEditor : nullptr);
    mKind->setText(ProjectName(*mDocument) + QLatin1Char('\n') + DescribeContent(content));
    mFile->setText(DescribeFile(content));
    mIsTakingText = true;
    mEditor->setPlainText(ToQString(mDocument->GetEditorText()));
    mEditor->document()->setModified(false);
    mIsTakingText = false;
    UpdateState();
}

void ProjectPage::TakeRecoveredText() {
    QTextCursor cursor(mEditor->document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(ToQString(mDocument->TakeRecoveredText()));
    mEditor->moveCursor(QTextCursor::Start);
    mEditor->ensureCursorVisible();
    UpdateState();
}

void ProjectPage::UpdateState() {
    const bool isLost = HasLostLock(*mDocument);
    const bool isReadOnly = mDocument->IsReadOnly();
    if (!mDocument->IsDirty() && mEditor->document()->isModified()) mEditor->document()->setModified(false);
    LetEdit(*mEditor, !isReadOnly);
    mEditor->setAccessibleName(ProjectName(*mDocument));
    const host::UTF16String& trouble = mDocument->GetTrouble();
    mTrouble->SetText(ToQString(host::ZString(
        "$$$/Desk/Projects/TroubleText=This project cannot be saved now. @0\nIt keeps its lock, and can "
        "be saved again once that is over.",
        {trouble})));
    mTrouble->setVisible(!trouble.empty() && !isReadOnly);
    mOutOfDate->setVisible(mDocument->IsOutOfDate());
    mRecovered->SetText(DescribeRecovery(*mDocument));
    mRecovered->setVisible(mDocument->IsRecovered());
    if (isReadOnly && !IsShownReadOnly()) mIsHeld = mIsFree = false;
    mLockLost->setVisible(isLost);
    mReadOnly->setVisible(isReadOnly && !isLost);
    ShowHolder();
}

bool ProjectPage::IsShownReadOnly() const {
    return !mReadOnly->isHidden() || !mLockLost->isHidden();
}

void ProjectPage::TakeLocks(const std::vector<StandingLock>& locks) {
    const auto isUnknown = [](const StandingLock& lock) { return lock.mSeen.mSystemError != 0; };
    const auto holder = std::ranges::find_if(locks, [&](const StandingLock& lock) {
        return !isUnknown(lock) && FindLockHolder(lock.mRecord) == LockHolder::AnotherProcess;
    });
    mIsHeld = holder != locks.end();
    mIsFree = !mIsHeld && std::ranges::none_of(locks, isUnknown);
    if (mIsHeld) mHolder = DescribeHolder(holder->mRecord);
    ShowHolder();
}

void ProjectPage::ShowHolder() {
    mReadOnly->SetText(mIsHeld ? ToDisplayText(host::ZString(
                                     "$$$/Desk/Projects/ReadOnlyHeld=Read-only. Locked by @0.", {mHolder}))
                               : Localized("$$$/Desk/Projects/ReadOnlyText=Read-only."));
    mReadOnly->ShowButton(kCommandToggleReadOnly, !mIsHeld);
    mReadOnly->ShowButton(kCommandBreakLock, mIsHeld);
    mLockLost->SetText(DescribeLoss());
    mLockLost->ShowButton(kCommandToggleReadOnly, mIsFree && !mDocument->IsOutOfDate());
}

QString ProjectPage::DescribeLoss() const {
    if (mIsHeld)
        return ToDisplayText(host::ZString(
            "$$$/Desk/Projects/LockTaken=Your lock was taken over: the project is locked by @0. Your "
            "changes can only be saved as a copy.",
            {mHolder}));
    if (!mIsFree)
        return Localized(
            "$$$/Desk/Projects/LockLostText=Your lock was taken over or removed. Your changes can only be saved as a "
            "copy.");
    return mDocument->IsOutOfDate()
               ? Localized(
                     "$$$/Desk/Projects/LockGoneAndChanged=Your lock was removed, and the file has been changed since. "
                     "Nobody holds the project now. Your changes can only be saved as a copy.")
               : Localized(
                     "$$$/Desk/Projects/LockGone=Your lock was removed, and nobody holds the project now. Its file is "
                     "as you know it: you can go on in read-write mode.");
}

}  // namespace desk
