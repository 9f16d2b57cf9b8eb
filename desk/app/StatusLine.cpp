#include "desk/app/StatusLine.h"

#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QStatusBar>
#include <chrono>
#include <cmath>

#include "desk/app/ElidedLabel.h"
#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/Services.h"
#include "desk/core/language/Localized.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/names/QtStrings.h"
#include "desk/files/live/WatchStatus.h"
#include "desk/project/production/Production.h"
#include "desk/toolkit/ControlImpl.h"
#include "desk/toolkit/Theme.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/project/SharedProjectsManager.h"

namespace desk {
namespace {

constexpr std::chrono::seconds kNoticeTime(15);
/// Nobody has read one that was shown for less.
constexpr std::chrono::seconds kReadingTime(5);
/// A tip that comes so soon after a notice does not hide it.
constexpr std::chrono::seconds kUnaskedTime(1);
constexpr int kMostInterrupted = 10;

host::UTF16String IntervalText(double seconds) {
    return host::NumberToString(seconds, seconds == std::floor(seconds) ? 0 : 1);
}

QLabel* MakeLabel() {
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setMinimumWidth(1);
    return label;
}

}  // namespace

QString DescribeWatchStatus(const QString& name, const WatchStatus& status) {
    const host::UTF16String shownName = ToUTF16(name);
    const host::UTF16String interval = IntervalText(status.mPollInterval);
    if (status.mSecondsWithoutAnswer > 0)
        return Localized(
            "$$$/Desk/Status/Silent=@0 — not answering for @1 s",
            {shownName, host::NumberToString(static_cast<long long>(status.mSecondsWithoutAnswer))});
    if (status.mSystemError != 0)
        return Localized("$$$/Desk/Status/NotAnswering=@0 — not answering: @1",
                         {shownName, host::DescribeSystemError(status.mSystemError)});
    if (status.mLimitReached)
        return Localized(
            "$$$/Desk/Status/LimitReached=@0 — polled every @1 s: the system's limit of watched folders is "
            "reached",
            {shownName, interval});
    if (status.mPolledFolders > 0)
        return Localized("$$$/Desk/Status/Polled=@0 — shared volume, polled every @1 s", {shownName, interval});
    return Localized("$$$/Desk/Status/Watched=@0 — watched for changes", {shownName});
}

StatusLine::StatusLine(QMainWindow& window) : mWindow(window), mText(new ElidedLabel(Qt::ElideRight, nullptr)) {
    QLabel* user = MakeLabel();
    user->setText(Localized("$$$/Desk/Status/User=signed in as @0",
                            {ToUTF16(ToDisplayText(GetServices().mDesktop->UserName()))}));
    user->setMinimumWidth(user->sizeHint().width());
    window.statusBar()->setSizeGripEnabled(false);
    window.statusBar()->addWidget(mText, 1);
    window.statusBar()->addPermanentWidget(user);
    host::AddListener(kStation_WatchStatus, this);
    host::AddListener(kStation_UserNotices, this);
    host::AddListener(host::kStation_ZuProductionFolderPanel, this);
    mNoticeTimer.setSingleShot(true);
    QObject::connect(&mNoticeTimer, &QTimer::timeout, &mNoticeTimer, [this] {
        mNotice = mInterrupted.isEmpty() ? QString() : mInterrupted.takeLast();
        TimeNotice();
        Update();
    });
    QObject::connect(qApp, &QGuiApplication::focusWindowChanged, &mNoticeTimer, [this] { TimeNotice(); });
    Update();
}

StatusLine::~StatusLine() {
    host::RemoveListener(host::kStation_ZuProductionFolderPanel, this);
    host::RemoveListener(kStation_UserNotices, this);
    host::RemoveListener(kStation_WatchStatus, this);
}

void StatusLine::SetActivity(const QString& activity) {
    mActivity = activity;
    Update();
}

void StatusLine::ShowNotice(const QString& text) {
    const bool isRead =
        mNoticeTimer.isActive() && mNoticeTimer.remainingTimeAsDuration() < kNoticeTime - kReadingTime;
    if (!mNotice.isEmpty() && !isRead) mInterrupted.append(mNotice);
    mInterrupted.removeAll(text);
    if (mInterrupted.size() > kMostInterrupted) mInterrupted.removeFirst();
    mNotice = text;
    // The pointer may rest long on what told the tip.
    mTip.clear();
    mNoticeTimer.stop();
    TimeNotice();
    Update();
}

void StatusLine::TimeNotice() {
    if (!mWindow.isActiveWindow())
        mNoticeTimer.stop();
    else if (!mNotice.isEmpty() && !mNoticeTimer.isActive())
        mNoticeTimer.start(kNoticeTime);
}

void StatusLine::SetTip(const QString& tip) {
    // After a drop the pointer comes to rest on something, whose tip nobody has asked for.
    const bool isJustTold =
        mNoticeTimer.isActive() && mNoticeTimer.remainingTimeAsDuration() > kNoticeTime - kUnaskedTime;
    mTip = isJustTold ? QString() : tip;
    Update();
}

void StatusLine::ListenToMessage(const host::Message& message) {
    if (const auto* notice = host::MessageCast<UserNoticeMessage>(message))
        return ShowNotice(ToDisplayText(notice->GetText()));
    Update();
}

QString StatusLine::FindText() const {
    for (const QString& text : {mTip, mNotice, mActivity})
        if (!text.isEmpty()) return text;
    const host::UTF16String& folder = Production::Instance().GetFolder();
    if (folder.empty()) return Localized("$$$/Desk/Status/NoProduction=No production is open");
    return DescribeWatchStatus(ToDisplayText(host::PathUtils::GetFullFilePart(folder)), GetWatchStatus());
}

void StatusLine::Update() {
    mText->SetFullText(FindText());
    if (mText->HasRoom()) mText->setToolTip(ToToolTip(ToDisplayText(Production::Instance().GetFolder())));
}

}  // namespace desk
