#pragma once

#include <QStackedWidget>

class QTabWidget;

namespace desk {

/// The middle of the window: the place for open projects, one tab each. While there are none, a page says so.
/// UI thread.
class ProjectArea : public QStackedWidget {
public:
    explicit ProjectArea(QWidget* parent);

private:
    QTabWidget* mProjects;
};

}  // namespace desk
