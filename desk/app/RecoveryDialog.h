#pragma once

#include <QDialog>
#include <vector>

#include "desk/project/document/KeptText.h"

class QPushButton;
class QVBoxLayout;

namespace desk {

class RecoveryRow;

/// The list of texts that can be recovered. Closing it leaves them for later. UI thread.
class RecoveryDialog : public QDialog {
    Q_OBJECT

public:
    explicit RecoveryDialog(QWidget* parent);

    /// Shows these; rows of those that were there already stay.
    void Show(const std::vector<KeptTextFile>& files);
    /// Null when it is not shown.
    RecoveryRow* FindRow(const std::string& path) const;

    /// A row for it has been made.
    Q_SIGNAL void RowAdded(desk::RecoveryRow* row);
    /// The user has come back to the list.
    Q_SIGNAL void Entered();

protected:
    void changeEvent(QEvent* event) override;

private:
    void Remove(RecoveryRow& row);

    QVBoxLayout* mRowLayout;
    QPushButton* mLater;
    std::vector<RecoveryRow*> mRows;
};

}  // namespace desk
