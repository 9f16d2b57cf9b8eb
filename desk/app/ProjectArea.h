#pragma once

#include <QStackedWidget>

#include "desk/project/document/ProjectDocument.h"
#include "desk/project/document/ProjectLooks.h"
#include "host/core/Messaging.h"
#include "host/framework/CommandHandler.h"

class QPlainTextEdit;

namespace desk {

class ProjectPage;
class ProjectTabs;

/// The middle of the window: the place for open projects, one tab each. While there are none, a page says so.
/// It follows the open projects and is on duty for commands while the keyboard is in it. UI thread.
class ProjectArea : public QStackedWidget, public host::Listener, public host::CommandHandler {
    Q_OBJECT

public:
    explicit ProjectArea(QWidget* parent);
    ~ProjectArea() override;

    /// The project in front; empty when none is open.
    ProjectDocumentRef GetActiveDocument() const;
    /// The open projects in the order of their tabs.
    std::vector<ProjectDocumentRef> GetDocuments() const;
    /// Puts the tabs of these documents beside each other, in this order, where the first of them stands.
    void Arrange(const std::vector<ProjectDocumentRef>& documents);
    /// True when somebody else is known to hold the project in front, which is open read-only. Touches no disk.
    bool IsActiveDocumentHeld() const;
    /// Looks again who holds the projects that are read-only.
    void UpdateHolders();

    void ListenToMessage(const host::Message& message) override;
    bool FindCommandStatus(int id, bool& enabled, bool& checked, host::MenuMark& mark,
                           host::UTF16String& text) override;
    bool ObeyCommand(const host::Command& command) override;

    /// Another project is in front, or its title is another.
    Q_SIGNAL void ActiveProjectChanged();
    /// Other projects are open, or at other paths, in another order, or with another one in front.
    Q_SIGNAL void ProjectsChanged();

private:
    void Add(const ProjectDocumentRef& document);
    void Remove(const ProjectDocumentRef& document);
    void Follow(const host::Message& message);
    void TakeKeyboardOfPanel();
    /// Empty for a project that needs none.
    ProjectLooks::Look PrepareHolderLook(const ProjectDocumentRef& document, bool isAnnounced);
    int FindTab(const ProjectDocument* document) const;
    ProjectPage* GetPage(int index) const;
    /// Null when there is none.
    ProjectPage* GetFrontPage() const;
    /// The editor of the project in front; null when it shows no text.
    QPlainTextEdit* FindFrontEditor() const;
    void UpdateState(int index);
    void UpdateTab(int index);
    void TabChanged();
    void CloseTab(int index);
    void ShowTabMenu(QPoint point);
    void FocusChanged(QWidget* old, QWidget* now);

    ProjectTabs* mTabs;
    /// At who holds the projects that are read-only.
    ProjectLooks mHolderLooks;
};

}  // namespace desk
