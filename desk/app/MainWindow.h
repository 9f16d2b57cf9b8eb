#pragma once

#include <QMainWindow>
#include <memory>

#include "desk/app/ProductionCommands.h"
#include "desk/framework/DockWorkspace.h"

namespace desk {

class CopiesUnderWay;
class KeyChoice;
class RowEditing;
class WindowTitle;
class Profile;
class ProjectArea;
class ProjectCommands;
class RecentProductions;
class StatusLine;

/// The window: menu bar, panels in docks, the place for open projects, status bar. UI thread.
class MainWindow : public QMainWindow {
public:
    static constexpr const char* kLayoutFileName = "Window Layout.json";

    /// With `recent` null nothing is remembered: neither productions nor the window's layout, which is the
    /// default one then. `profile` outlives the window. `size` may be invalid: the one of last time.
    MainWindow(const Profile& profile, RecentProductions* recent, QSize size);
    /// Destroys the panels first.
    ~MainWindow() override;

    ProductionCommands& Productions() { return *mProductions; }
    ProjectArea& Projects() { return *mProjects; }
    /// The user wants to end the program: projects that close now were open at its end.
    bool IsClosing() const { return mIsClosing; }
    void SaveLayout() const;

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    /// Ends the program, unless the user wants to keep a project open or copies going.
    void closeEvent(QCloseEvent* event) override;
    QMenu* createPopupMenu() override;

private:
    void RegisterCommands();
    void MakeMenus();
    QMenu& AddMenu(const char* titleKey, const char* menuID);
    void LeaveMenuBar();
    void FillWindowMenu(QMenu& menu);
    void RestoreLayout(QSize size);
    void ShowAbout();
    void ShowPlaces();

    const Profile& mProfile;
    RecentProductions* mRecent;
    bool mMayWriteLayout = true;
    std::unique_ptr<StatusLine> mStatusLine;
    std::unique_ptr<DockWorkspace> mWorkspace;
    std::unique_ptr<ProductionCommands> mProductions;
    ProjectArea* mProjects;
    std::unique_ptr<ProjectCommands> mProjectCommands;
    std::unique_ptr<CopiesUnderWay> mCopies;
    std::unique_ptr<KeyChoice> mKeyChoice;
    std::unique_ptr<RowEditing> mRowEditing;
    std::unique_ptr<WindowTitle> mTitle;
    bool mIsClosing = false;
};

}  // namespace desk
