#include "desk/app/ProgressList.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

#include "desk/app/ProgressRow.h"
#include "desk/core/language/Localized.h"
#include "desk/core/names/QtStrings.h"

namespace desk {
namespace {

constexpr int kMargin = 8;

/// Where a job stands among the kinds.
std::size_t KindOf(const CopyJob& job) {
    switch (job.mState) {
        case CopyJob::State::UnderWay:
            return 0;
        case CopyJob::State::Waiting:
            return 1;
        case CopyJob::State::Failed:
        case CopyJob::State::InDoubt:
            return 2;
        default:
            return 3;
    }
}

/// The jobs that are shown, in their order.
std::vector<const CopyJob*> ChooseShown(const std::vector<CopyJob>& jobs) {
    std::array<std::vector<const CopyJob*>, 4> kinds;
    for (const CopyJob& job : jobs) kinds[KindOf(job)].push_back(&job);
    for (const std::size_t finished : {2u, 3u}) std::ranges::reverse(kinds[finished]);
    std::vector<const CopyJob*> shown;
    for (const auto& kind : kinds)
        shown.insert(
            shown.end(), kind.begin(),
            kind.begin() + static_cast<std::ptrdiff_t>(std::min(kind.size(), ProgressList::kMostRows)));
    return shown;
}

QLabel* MakeNote(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setProperty("secondary", true);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

}  // namespace

ProgressList::ProgressList(QWidget* parent)
    : QWidget(parent),
      mClear(new QPushButton(Localized("$$$/Desk/Progress/Clear=Clear Finished"), this)),
      mCancelAll(new QPushButton(Localized("$$$/Desk/Progress/CancelAll=Cancel All"), this)),
      mEmpty(MakeNote(this)),
      mRest(MakeNote(this)),
      mScrollArea(new QScrollArea(this)) {
    mEmpty->setText(Localized("$$$/Desk/Progress/Empty=Nothing is being copied."));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, kMargin, 0, 0);
    layout->addWidget(mEmpty, 1);
    MakeRows(*layout);
    MakeButtons(*layout);
    // Else a panel that comes to the front hands the keyboard to "Cancel All", and who types on presses it.
    setFocusPolicy(Qt::TabFocus);
    host::AddListener(kStation_CopyQueue, this);
    Update();
}

ProgressList::~ProgressList() {
    host::RemoveListener(kStation_CopyQueue, this);
}

QSize ProgressList::sizeHint() const {
    return {480, 160};
}

void ProgressList::MakeRows(QVBoxLayout& layout) {
    auto* content = new QWidget;
    mRowLayout = new QVBoxLayout(content);
    mRowLayout->setContentsMargins(0, 0, 0, 0);
    mRowLayout->addWidget(mRest);
    mRowLayout->addStretch(1);
    mScrollArea->setWidget(content);
    mScrollArea->setWidgetResizable(true);
    mScrollArea->setFrameShape(QFrame::NoFrame);
    mScrollArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    mScrollArea->setFocusPolicy(Qt::NoFocus);
    mScrollArea->setAccessibleName(Localized("$$$/Desk/Progress/ListName=Copies"));
    layout.addWidget(mScrollArea, 1);
}

void ProgressList::MakeButtons(QVBoxLayout& layout) {
    auto* buttons = new QHBoxLayout;
    buttons->setContentsMargins(kMargin, 0, kMargin, kMargin);
    buttons->addStretch(1);
    buttons->addWidget(mClear);
    buttons->addWidget(mCancelAll);
    layout.addLayout(buttons);
    connect(mClear, &QPushButton::clicked, this, [] {
        if (CopyQueue* queue = CopyQueue::Current()) queue->ClearFinished();
    });
    connect(mCancelAll, &QPushButton::clicked, this, [] {
        if (CopyQueue* queue = CopyQueue::Current()) queue->CancelAll();
    });
}

void ProgressList::ListenToMessage(const host::Message& message) {
    if (host::MessageCast<CopyQueueChangedMessage>(message)) Update();
}

void ProgressList::Update() {
    const CopyQueue* queue = CopyQueue::Current();
    const std::vector<CopyJob> jobs = queue ? queue->GetJobs() : std::vector<CopyJob>();
    const std::vector<const CopyJob*> shown = ChooseShown(jobs);
    ShowRows(shown);
    ShowRest(jobs.size() - shown.size());
    mEmpty->setVisible(jobs.empty());
    mScrollArea->setVisible(!jobs.empty());
    mClear->setEnabled(std::ranges::any_of(jobs, &CopyJob::IsFinished));
    mCancelAll->setEnabled(
        std::ranges::any_of(jobs, [](const CopyJob& job) { return !job.IsFinished() && !job.mIsCancelling; }));
}

void ProgressList::ShowRows(const std::vector<const CopyJob*>& shown) {
    std::map<std::uint64_t, ProgressRow*> rows;
    int place = 0;
    for (const CopyJob* job : shown) {
        auto known = mRows.extract(job->mID);
        ProgressRow* row = known ? known.mapped() : new ProgressRow(job->mID, mScrollArea->widget());
        const QLayoutItem* item = mRowLayout->itemAt(place);
        if (!item || item->widget() != row) mRowLayout->insertWidget(place, row);
        ++place;
        row->Show(*job);
        rows[job->mID] = row;
    }
    for (const auto& [id, row] : mRows) {
        row->hide();
        row->deleteLater();
    }
    mRows = std::move(rows);
}

void ProgressList::ShowRest(std::size_t count) {
    mRest->setVisible(count > 0);
    const QString number = QLocale().toString(static_cast<qulonglong>(count));
    mRest->setText(Localized("$$$/Desk/Progress/Rest=and @0 more", {ToUTF16(number)}));
}

}  // namespace desk
