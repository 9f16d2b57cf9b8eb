#include "desk/app/ProjectArea.h"

#include <QApplication>
#include <QFontInfo>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "desk/app/ProgramCommands.h"
#include "desk/app/ProjectPage.h"
#include "desk/app/ProjectTabBar.h"
#include "desk/app/ProjectTexts.h"
#include "desk/core/edges/Services.h"
#include "desk/core/language/Localized.h"
#include "desk/core/work/LongWork.h"
#include "desk/framework/CommandRouter.h"
#include "desk/framework/MainCommander.h"
#include "desk/framework/MenuResources.h"
#include "desk/project/production/BreakLock.h"
#include "desk/toolkit/ControlImpl.h"
#include "host/framework/CommandIdentifiers.h"
#include "host/framework/ShortcutManager.h"
#include "host/framework/TabView.h"
#include "host/project/DocumentManager.h"

namespace desk {

/// Lets the bar of tabs be one of ours.
class ProjectTabs : public QTabWidget {
public:
    ProjectTabs() : mBar(new ProjectTabBar(this)) {
        setTabBar(mBar);
        setDocumentMode(true);
    }
    ProjectTabBar& Bar() { return *mBar; }

private:
    ProjectTabBar* mBar;
};

namespace {

QLabel* MakeLine(const char* key, double scale, bool isEnabled) {
    auto* label = new QLabel(Localized(key));
    QFont font = label->font();
    font.setPixelSize(qRound(QFontInfo(font).pixelSize() * scale));
    label->setFont(font);
    label->setEnabled(isEnabled);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    return label;
}

/// Shown while no project is open.
class EmptyPage : public QWidget {
public:
    EmptyPage() : mReopen(new QPushButton(Localized("$$$/Desk/Commands/ReopenSession=Reopen Last Session"))) {
        auto* layout = new QVBoxLayout(this);
        layout->addStretch(2);
        layout->addWidget(MakeLine("$$$/Desk/Projects/None=No project is open", 1.3, true));
        layout->addWidget(
            MakeLine("$$$/Desk/Projects/Hint=Projects that you open have their place here.", 1, false));
        layout->addSpacing(kGap);
        layout->addWidget(mReopen, 0, Qt::AlignHCenter);
        layout->addStretch(3);
        connect(mReopen, &QPushButton::clicked, this,
                [] { CommandRouter::Instance().Send(kCommandReopenSession); });
    }

    void TakeKeyboard() { mReopen->isVisible() ? mReopen->setFocus() : setFocus(); }

protected:
    void showEvent(QShowEvent* event) override {
        mReopen->setVisible(CommandRouter::Instance().FindStatus(kCommandReopenSession).mIsEnabled);
        QWidget::showEvent(event);
    }

private:
    static constexpr int kGap = 12;
    QPushButton* mReopen;
};

}  // namespace

ProjectArea::ProjectArea(QWidget* parent)
    : QStackedWidget(parent),
      CommandHandler(nullptr),
      mTabs(new ProjectTabs),
      mHolderLooks(
          [this](const auto& document, bool isAnnounced) { return PrepareHolderLook(document, isAnnounced); }) {
    auto* emptyPage = new EmptyPage;
    addWidget(emptyPage);
    addWidget(mTabs);
    setMinimumWidth(160);
    connect(mTabs, &QTabWidget::currentChanged, this, &ProjectArea::TabChanged);
    connect(&mTabs->Bar(), &QTabBar::tabMoved, this, &ProjectArea::ProjectsChanged);
    connect(&mTabs->Bar(), &QTabBar::tabCloseRequested, this, &ProjectArea::CloseTab);
    connect(&mTabs->Bar(), &QWidget::customContextMenuRequested, this, &ProjectArea::ShowTabMenu);
    connect(qApp, &QApplication::focusChanged, this, &ProjectArea::FocusChanged);
    host::AddListener(host::kBackendProjectActivationStationID, this);
    host::AddListener(kStation_ProjectDocuments, this);
    host::AddListener(host::kStation_WindowClosing, this);
    for (const OpenProjectRef& project : OpenProjectList::Instance().Get())
        if (const ProjectDocumentRef document = ToDocument(project)) Add(document);
    MainCommander::Instance().Register(host::CommandID::kPanelClosedWithoutProjects, {}, [emptyPage] {
        emptyPage->TakeKeyboard();
        return true;
    });
}

ProjectArea::~ProjectArea() {
    MainCommander::Instance().Register(host::CommandID::kPanelClosedWithoutProjects, {}, {});
    qApp->disconnect(this);
    mTabs->disconnect(this);
    host::RemoveListener(host::kStation_WindowClosing, this);
    host::RemoveListener(kStation_ProjectDocuments, this);
    host::RemoveListener(host::kBackendProjectActivationStationID, this);
    CommandRouter::Instance().ForgetEditor(this);
}

ProjectPage* ProjectArea::GetPage(int index) const {
    return static_cast<ProjectPage*>(mTabs->widget(index));
}

ProjectPage* ProjectArea::GetFrontPage() const {
    return GetPage(mTabs->currentIndex());
}

ProjectDocumentRef ProjectArea::GetActiveDocument() const {
    const ProjectPage* page = GetFrontPage();
    return page ? page->GetDocument() : ProjectDocumentRef();
}

std::vector<ProjectDocumentRef> ProjectArea::GetDocuments() const {
    std::vector<ProjectDocumentRef> documents;
    for (int i = 0; i < mTabs->count(); ++i) documents.push_back(GetPage(i)->GetDocument());
    return documents;
}

void ProjectArea::Arrange(const std::vector<ProjectDocumentRef>& documents) {
    std::vector<ProjectDocumentRef> shown = documents;
    std::erase_if(shown, [this](const ProjectDocumentRef& document) { return FindTab(document.get()) < 0; });
    int place = mTabs->count();
    for (const ProjectDocumentRef& document : shown) place = std::min(place, FindTab(document.get()));
    for (const ProjectDocumentRef& document : shown) mTabs->Bar().moveTab(FindTab(document.get()), place++);
}

int ProjectArea::FindTab(const ProjectDocument* document) const {
    for (int i = 0; i < mTabs->count(); ++i)
        if (GetPage(i)->GetDocument().get() == document) return i;
    return -1;
}

void ProjectArea::ListenToMessage(const host::Message& message) {
    if (const auto* opened = host::MessageCast<host::ProjectOpenedMessage>(message)) {
        if (const ProjectDocumentRef document = ToDocument(opened->GetProject())) Add(document);
    } else if (const auto* closed = host::MessageCast<host::ProjectClosedMessage>(message)) {
        if (const ProjectDocumentRef document = ToDocument(closed->GetProject())) Remove(document);
    } else if (host::MessageCast<host::HandlerWindowClosingMessage>(message)) {
        TakeKeyboardOfPanel();
    } else {
        Follow(message);
    }
}

/// Of one that is closing: it was on duty if nobody is now.
void ProjectArea::TakeKeyboardOfPanel() {
    const CommandRouter& router = CommandRouter::Instance();
    ProjectPage* page = GetFrontPage();
    if (page && !router.GetViewOnDuty() && !router.GetEditorOnDuty()) page->setFocus();
}

void ProjectArea::Follow(const host::Message& message) {
    using What = ProjectDocumentMessage::What;
    const auto* news = host::MessageCast<ProjectDocumentMessage>(message);
    const int index = news ? FindTab(news->GetDocument().get()) : -1;
    if (index < 0) return;
    if (news->GetWhat() == What::Activated) {
        mTabs->setCurrentIndex(index);
        GetPage(index)->setFocus();
        return;
    }
    if (news->GetWhat() == What::Content)
        GetPage(index)->UpdateContent();
    else if (news->GetWhat() == What::Recovered)
        GetPage(index)->TakeRecoveredText();
    else
        UpdateState(index);
    mHolderLooks.LookNow(news->GetDocument());
    UpdateTab(index);
}

void ProjectArea::UpdateState(int index) {
    ProjectPage& page = *GetPage(index);
    const bool wasReadOnly = page.IsShownReadOnly();
    page.UpdateState();
    // Who has asked to write the project in front writes next.
    if (wasReadOnly && !page.IsShownReadOnly() && index == mTabs->currentIndex()) page.setFocus();
}

/// While nothing has been announced, who holds the project that shows is all that anybody sees.
ProjectLooks::Look ProjectArea::PrepareHolderLook(const ProjectDocumentRef& document, bool isAnnounced) {
    const bool isWanted = isAnnounced || (document == GetActiveDocument() && isVisible());
    if (!document->IsReadOnly() || !isWanted) return {};
    return [this, path = document->GetProjectPath(), file = document->GetFile().mPath] {
        return [this, locks = FindStandingLocks(path, file)](const ProjectDocumentRef& looked) {
            if (const int index = FindTab(looked.get()); index >= 0) GetPage(index)->TakeLocks(locks);
            return false;
        };
    };
}

void ProjectArea::Add(const ProjectDocumentRef& document) {
    if (FindTab(document.get()) >= 0) return;
    auto* page = new ProjectPage(document);
    const int index = mTabs->insertTab(mTabs->currentIndex() + 1, page, ProjectName(*document));
    UpdateTab(index);
    setCurrentWidget(mTabs);
    mTabs->setCurrentIndex(index);
    page->setFocus();
}

void ProjectArea::Remove(const ProjectDocumentRef& document) {
    const int index = FindTab(document.get());
    if (index < 0) return;
    ProjectPage* page = GetPage(index);
    const bool hadFocus = page->isAncestorOf(QApplication::focusWidget());
    page->Leave();
    mTabs->removeTab(index);
    page->deleteLater();
    if (mTabs->count() == 0) setCurrentIndex(0);
    if (ProjectPage* next = GetFrontPage(); next && hadFocus) next->setFocus();
    Q_EMIT ProjectsChanged();
}

void ProjectArea::UpdateTab(int index) {
    const ProjectDocument& document = *GetPage(index)->GetDocument();
    const QString title = ProjectTitle(document);
    mTabs->setTabText(index, QString(title).replace(QLatin1Char('&'), QLatin1String("&&")));
    mTabs->setTabToolTip(index, ToToolTip(ProjectToolTip(document)));
    mTabs->Bar().setAccessibleTabName(index, SpokenProjectTitle(document));
    mTabs->Bar().SetItalic(index, document.IsReadOnly() && document.IsOutOfDate());
    if (index == mTabs->currentIndex()) Q_EMIT ActiveProjectChanged();
    Q_EMIT ProjectsChanged();
}

void ProjectArea::TabChanged() {
    if (host::DocumentManager* manager = host::DocumentManager::Instance())
        manager->SetActiveProject(GetActiveDocument());
    if (const ProjectDocumentRef document = GetActiveDocument()) mHolderLooks.LookNow(document);
    Q_EMIT ActiveProjectChanged();
    Q_EMIT ProjectsChanged();
}

bool ProjectArea::IsActiveDocumentHeld() const {
    const ProjectPage* page = GetFrontPage();
    return page && page->IsHeldBySomebodyElse();
}

void ProjectArea::UpdateHolders() {
    for (const ProjectDocumentRef& document : GetDocuments()) mHolderLooks.LookNow(document);
}

void ProjectArea::CloseTab(int index) {
    host::DocumentManager* manager = host::DocumentManager::Instance();
    const ProjectPage* page = GetPage(index);
    if (manager && page && !IsLongWorkRunning()) manager->CloseProject(page->GetDocument(), true);
}

void ProjectArea::ShowTabMenu(QPoint point) {
    const int index = mTabs->Bar().tabAt(point);
    if (index < 0) return;
    mTabs->setCurrentIndex(index);
    const QPoint screen = mTabs->Bar().mapToGlobal(point);
    MenuResources::Instance().Track("ProductionDesk_Project_Menu", mTabs->Bar(), screen.x(), screen.y());
}

void ProjectArea::FocusChanged(QWidget* old, QWidget* now) {
    const bool isWithin = old && isAncestorOf(old) && CommandRouter::Instance().GetEditorOnDuty() == this;
    if (!now || !isAncestorOf(now) || isWithin) return;
    CommandRouter::Instance().SetEditorOnDuty(this);
    host::ShortcutManager::Instance()->ApplyContext(kProjectsContext, false);
}

}  // namespace desk
