#pragma once

#include "host/core/Messaging.h"

class QWidget;

namespace desk {

class ProjectArea;

/// Keeps the title of the main window: the project in front, the production, the program. UI thread.
class WindowTitle : private host::Listener {
public:
    WindowTitle(QWidget& window, ProjectArea& projects);
    ~WindowTitle() override;

private:
    void ListenToMessage(const host::Message&) override { Update(); }
    void Update();

    QWidget& mWindow;
    ProjectArea& mProjects;
};

}  // namespace desk
