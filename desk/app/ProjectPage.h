#pragma once

#include <QPlainTextEdit>
#include <QStackedWidget>
#include <memory>

#include "desk/project/document/ProjectDocument.h"
#include "desk/project/production/BreakLock.h"

class QLabel;

namespace desk {

class ProjectNotice;

/// What the tab of an open project shows: its text in an editor, or, where there is no text to edit, what the
/// project is; above that what is to be known of its state. UI thread.
class ProjectPage : public QWidget {
public:
    explicit ProjectPage(ProjectDocumentRef document);
    ~ProjectPage() override;

    /// The document is closed: nothing is shown of it any more.
    void Leave();

    const ProjectDocumentRef& GetDocument() const { return mDocument; }
    QPlainTextEdit& GetEditor() { return *mEditor; }
    /// False where there is no text.
    bool ShowsText() const;

    /// The document's content has been replaced.
    void UpdateContent();
    /// The document's recovered text takes the place of what is shown; it can be undone.
    void TakeRecoveredText();
    /// Dirty, read-only or out of date may have changed.
    void UpdateState();
    /// As of the last `UpdateState`.
    bool IsShownReadOnly() const;
    /// A look at a project that is open read-only, or whose lock was lost, has found these locks.
    void TakeLocks(const std::vector<StandingLock>& locks);
    /// True when the last look has found that somebody else holds the project, which is open read-only.
    bool IsHeldBySomebodyElse() const { return mDocument->IsReadOnly() && mIsHeld; }

private:
    QWidget* MakeFacts();
    void MakeNotices();
    void ShowHolder();
    QString DescribeLoss() const;

    ProjectDocumentRef mDocument;
    ProjectNotice* mReadOnly;
    ProjectNotice* mOutOfDate;
    ProjectNotice* mLockLost;
    ProjectNotice* mTrouble;
    ProjectNotice* mRecovered;
    QStackedWidget* mContent;
    QPlainTextEdit* mEditor;
    QLabel* mKind;
    QLabel* mFile;
    bool mIsTakingText = false;
    /// What the last look has found: somebody else holds the project, as `mHolder` says, or nobody does, or,
    /// with neither, nobody can tell.
    bool mIsHeld = false;
    bool mIsFree = false;
    host::UTF16String mHolder;
    bool mHasLeft = false;
};

}  // namespace desk
