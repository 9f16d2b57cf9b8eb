#include "desk/app/RecoveryDialog.h"

#include <QDialogButtonBox>
#include <QEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

#include "desk/app/RecoveryRow.h"
#include "desk/core/language/Localized.h"

namespace desk {
namespace {

constexpr int kMargin = 16;
constexpr QSize kSize(640, 420);

QLabel* MakeHeading() {
    auto* label = new QLabel(
        Localized("$$$/Desk/Recovery/Heading=These texts were not saved when the program ended. They are kept "
                  "until you save or discard them; no project was changed."));
    label->setWordWrap(true);
    return label;
}

}  // namespace

RecoveryDialog::RecoveryDialog(QWidget* parent) : QDialog(parent) {
    setWindowTitle(Localized("$$$/Desk/Recovery/Title=Recover Unsaved Text"));
    auto* content = new QWidget;
    mRowLayout = new QVBoxLayout(content);
    mRowLayout->setContentsMargins(0, 0, 0, 0);
    mRowLayout->setSpacing(0);
    mRowLayout->addStretch(1);
    auto* list = new QScrollArea;
    list->setWidget(content);
    list->setWidgetResizable(true);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setFocusPolicy(Qt::NoFocus);
    list->setAccessibleName(windowTitle());
    auto* buttons = new QDialogButtonBox;
    mLater = buttons->addButton(Localized("$$$/Desk/Recovery/Later=Later"), QDialogButtonBox::RejectRole);
    mLater->setDefault(true);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    layout->setSpacing(kMargin);
    layout->addWidget(MakeHeading());
    layout->addWidget(list, 1);
    layout->addWidget(buttons);
    resize(kSize);
    mLater->setFocus();
}

void RecoveryDialog::Show(const std::vector<KeptTextFile>& files) {
    std::erase_if(mRows, [&](RecoveryRow* row) {
        const bool stays = std::ranges::any_of(
            files, [&](const KeptTextFile& file) { return file.mPath == row->GetFile().mPath; });
        if (!stays) Remove(*row);
        return !stays;
    });
    for (const KeptTextFile& file : files) {
        if (FindRow(file.mPath)) continue;
        auto* row = new RecoveryRow(file, mRowLayout->parentWidget());
        mRowLayout->insertWidget(static_cast<int>(mRows.size()), row);
        mRows.push_back(row);
        Q_EMIT RowAdded(row);
    }
    if (mRows.empty()) close();
}

/// The next key would press a button of the next row.
void RecoveryDialog::Remove(RecoveryRow& row) {
    if (row.isAncestorOf(focusWidget())) mLater->setFocus();
    row.hide();
    row.deleteLater();
}

RecoveryRow* RecoveryDialog::FindRow(const std::string& path) const {
    const auto found =
        std::ranges::find_if(mRows, [&](const RecoveryRow* row) { return row->GetFile().mPath == path; });
    return found == mRows.end() ? nullptr : *found;
}

void RecoveryDialog::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) Q_EMIT Entered();
}

}  // namespace desk
