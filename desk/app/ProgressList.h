#pragma once

#include <QWidget>
#include <map>
#include <vector>

#include "desk/project/production/CopyQueue.h"
#include "host/core/Messaging.h"

class QLabel;
class QPushButton;
class QScrollArea;
class QVBoxLayout;

namespace desk {

class ProgressRow;

/// What the progress panel shows: the jobs of the copy queue, those under way first, then those that wait, then
/// what failed, then the rest, the newest first. Of very many it shows the first of each kind. UI thread.
class ProgressList : public QWidget, private host::Listener {
public:
    /// Of each kind.
    static constexpr std::size_t kMostRows = 100;

    explicit ProgressList(QWidget* parent);
    ~ProgressList() override;

    QSize sizeHint() const override;

private:
    void ListenToMessage(const host::Message& message) override;
    void MakeButtons(QVBoxLayout& layout);
    void MakeRows(QVBoxLayout& layout);
    void Update();
    void ShowRows(const std::vector<const CopyJob*>& shown);
    void ShowRest(std::size_t count);

    QPushButton* mClear;
    QPushButton* mCancelAll;
    QLabel* mEmpty;
    QLabel* mRest;
    QScrollArea* mScrollArea;
    QVBoxLayout* mRowLayout;
    std::map<std::uint64_t, ProgressRow*> mRows;
};

}  // namespace desk
