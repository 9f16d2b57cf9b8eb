#pragma once

#include <QWidget>
#include <optional>

#include "desk/project/document/FileSinceKept.h"
#include "desk/project/document/KeptText.h"

class QPushButton;

namespace desk {

class ElidedLabel;

/// One text in the list of those that can be recovered, with what can be done about it. UI thread.
class RecoveryRow : public QWidget {
    Q_OBJECT

public:
    RecoveryRow(KeptTextFile file, QWidget* parent);

    const KeptTextFile& GetFile() const { return mFile; }
    /// What the disk holds now.
    void ShowFound(const FileSinceKept& found);

    Q_SIGNAL void OpenChosen();
    Q_SIGNAL void CopyChosen();
    Q_SIGNAL void DiscardChosen();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    ElidedLabel* AddLine(const QString& text, bool isSecondary, Qt::TextElideMode mode);
    QPushButton* AddButton(const QString& text, void (RecoveryRow::*chosen)());

    KeptTextFile mFile;
    QWidget* mLines;
    QWidget* mButtons;
    ElidedLabel* mFound = nullptr;
};

}  // namespace desk
