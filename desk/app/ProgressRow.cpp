#include "desk/app/ProgressRow.h"

#include <QGridLayout>
#include <QProgressBar>
#include <QPushButton>

#include "desk/app/ElidedLabel.h"
#include "desk/app/ProgressTexts.h"
#include "desk/core/language/Localized.h"
#include "desk/core/names/QtStrings.h"

namespace desk {
namespace {

constexpr int kBarSteps = 1000;
constexpr int kBarHeight = 4;
constexpr int kMargin = 10;
constexpr int kGap = 4;

ElidedLabel* MakeLabel(Qt::TextElideMode mode, bool isSecondary, QWidget* parent) {
    auto* label = new ElidedLabel(mode, parent);
    label->setProperty("secondary", isSecondary);
    return label;
}

int ToSteps(const CopyJob& job) {
    const double part = static_cast<double>(job.mBytesDone) / static_cast<double>(job.mBytesTotal);
    return std::clamp(static_cast<int>(part * kBarSteps), 0, kBarSteps);
}

}  // namespace

ProgressRow::ProgressRow(std::uint64_t id, QWidget* parent)
    : QWidget(parent),
      mName(MakeLabel(Qt::ElideMiddle, false, this)),
      mFolder(MakeLabel(Qt::ElideMiddle, true, this)),
      mState(MakeLabel(Qt::ElideRight, true, this)),
      mBar(new QProgressBar(this)),
      mCancel(new QPushButton(Localized("$$$/Desk/Dialogs/Cancel=Cancel"), this)) {
    QFont font = mName->font();
    font.setBold(true);
    mName->setFont(font);
    setFocusPolicy(Qt::ClickFocus);
    mBar->setTextVisible(false);
    mBar->setFixedHeight(kBarHeight);
    connect(mCancel, &QPushButton::clicked, this, [id] {
        if (CopyQueue* queue = CopyQueue::Current()) queue->Cancel(id);
    });
    LayOut();
}

void ProgressRow::LayOut() {
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(kMargin, kGap, kMargin, kGap);
    grid->setHorizontalSpacing(kMargin);
    grid->setVerticalSpacing(kGap);
    grid->addWidget(mName, 0, 0);
    grid->addWidget(mFolder, 0, 1, Qt::AlignRight);
    grid->addWidget(mBar, 1, 0, 1, 2);
    grid->addWidget(mState, 2, 0, 1, 2);
    grid->addWidget(mCancel, 0, 2, 3, 1, Qt::AlignVCenter);
    grid->setColumnStretch(0, 1);
}

void ProgressRow::Show(const CopyJob& job) {
    const QString name = DescribeName(job);
    mName->SetFullText(name);
    mFolder->SetFullText(DescribeFolder(job));
    mState->SetFullText(DescribeState(job));
    ShowBar(job);
    ShowCancel(job);
    setAccessibleName(name);
    const host::UTF16String text = ToUTF16(name);
    mBar->setAccessibleName(Localized("$$$/Desk/Progress/BarName=Copying @0", {text}));
    mCancel->setAccessibleName(Localized("$$$/Desk/Progress/CancelName=Cancel copying @0", {text}));
}

/// The focus stays in the row: the next key would press the next row's button.
void ProgressRow::ShowCancel(const CopyJob& job) {
    const bool isOffered = !job.IsFinished() && !job.mIsCancelling;
    if (!isOffered && mCancel->hasFocus()) setFocus();
    mCancel->setVisible(!job.IsFinished());
    mCancel->setEnabled(isOffered);
}

void ProgressRow::ShowBar(const CopyJob& job) {
    mBar->setVisible(!job.IsFinished());
    const bool isUnknown = job.mState == CopyJob::State::UnderWay && job.mBytesTotal == 0;
    mBar->setMaximum(isUnknown ? 0 : kBarSteps);
    if (!isUnknown) mBar->setValue(job.mBytesTotal == 0 ? 0 : ToSteps(job));
}

}  // namespace desk
