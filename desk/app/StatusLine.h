#pragma once

#include <QString>
#include <QTimer>

#include "host/core/Messaging.h"

class QMainWindow;

namespace desk {

class ElidedLabel;
struct WatchStatus;

/// How the open production is followed, as the status bar words it. `name` is ready to be shown. UI thread.
QString DescribeWatchStatus(const QString& name, const WatchStatus& status);

/// The window's status bar: the production and how it is followed on the left, the user on the right. While the
/// pointer is over something that has a status-bar text, that text stands there. UI thread.
class StatusLine : public host::Listener {
public:
    explicit StatusLine(QMainWindow& window);
    ~StatusLine() override;

    /// Stands in place of the production until it is told empty: what is under way.
    void SetActivity(const QString& activity);
    /// Shows a message before what is under way, for some seconds in which the window is the active one: what
    /// stands in front of it may have the user's eyes. One that another has replaced too soon comes back after
    /// it.
    void ShowNotice(const QString& text);
    /// The text of what the pointer is over, before all else; empty when it is over nothing.
    void SetTip(const QString& tip);
    void ListenToMessage(const host::Message& message) override;

private:
    void Update();
    /// The time of a notice runs from when the user is back at the window.
    void TimeNotice();
    QString FindText() const;

    QMainWindow& mWindow;
    ElidedLabel* mText;
    QTimer mNoticeTimer;
    QString mTip;
    QString mNotice;
    /// Those that were shown too briefly, the last one last.
    QStringList mInterrupted;
    QString mActivity;
};

}  // namespace desk
