#pragma once

#include <QWidget>

#include "desk/project/production/CopyQueue.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace desk {

class ElidedLabel;

/// One job in the progress panel: its name and folder, a bar, how it stands, and a button that cancels it. UI
/// thread.
class ProgressRow : public QWidget {
public:
    ProgressRow(std::uint64_t id, QWidget* parent);

    /// Shows how the job stands now.
    void Show(const CopyJob& job);

private:
    void LayOut();
    void ShowCancel(const CopyJob& job);
    void ShowBar(const CopyJob& job);

    ElidedLabel* mName;
    ElidedLabel* mFolder;
    ElidedLabel* mState;
    QProgressBar* mBar;
    QPushButton* mCancel;
};

}  // namespace desk
