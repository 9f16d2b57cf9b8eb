#include "desk/app/StatusLine.h"

#include <QLabel>
#include <QMainWindow>
#include <QStatusBar>
#include <cmath>
#include <system_error>

#include "desk/core/Desktop.h"
#include "desk/core/QtStrings.h"
#include "desk/core/Services.h"
#include "desk/files/WatchStatus.h"
#include "desk/project/Production.h"
#include "desk/toolkit/Theme.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/project/SharedProjectsManager.h"

namespace desk {
namespace {

QString Localized(const char* key, std::initializer_list<host::UTF16String> arguments = {}) {
    return ToQString(host::ZString(key, arguments));
}

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
    if (status.mSystemError != 0)
        return Localized("$$$/Desk/Status/NotAnswering=@0 — not answering: @1",
                         {shownName, host::UTF8to16(std::generic_category().message(status.mSystemError))});
    if (status.mLimitReached)
        return Localized(
            "$$$/Desk/Status/LimitReached=@0 — polled every @1 s: the system's limit of watched folders is reached",
            {shownName, interval});
    if (status.mPolledFolders > 0)
        return Localized("$$$/Desk/Status/Polled=@0 — shared volume, polled every @1 s", {shownName, interval});
    return Localized("$$$/Desk/Status/Watched=@0 — watched for changes", {shownName});
}

StatusLine::StatusLine(QMainWindow& window) : mWindow(window), mProduction(MakeLabel()) {
    QLabel* user = MakeLabel();
    user->setText(Localized("$$$/Desk/Status/User=signed in as @0",
                            {ToUTF16(ToDisplayText(GetServices().mDesktop->UserName()))}));
    user->setMinimumWidth(user->sizeHint().width());
    mWindow.statusBar()->setSizeGripEnabled(false);
    mWindow.statusBar()->addWidget(mProduction, 1);
    mWindow.statusBar()->addPermanentWidget(user);
    host::AddListener(kStation_WatchStatus, this);
    host::AddListener(host::kStation_ZuProductionFolderPanel, this);
    Update();
}

StatusLine::~StatusLine() {
    host::RemoveListener(host::kStation_ZuProductionFolderPanel, this);
    host::RemoveListener(kStation_WatchStatus, this);
}

void StatusLine::SetActivity(const QString& activity) {
    mActivity = activity;
    Update();
}

void StatusLine::ShowNotice(const QString& text) {
    mWindow.statusBar()->showMessage(text, 15'000);
}

void StatusLine::ListenToMessage(const host::Message&) {
    Update();
}

void StatusLine::Update() {
    const host::UTF16String& folder = Production::Instance().GetFolder();
    if (!mActivity.isEmpty())
        mProduction->setText(mActivity);
    else if (folder.empty())
        mProduction->setText(Localized("$$$/Desk/Status/NoProduction=No production is open"));
    else
        mProduction->setText(
            DescribeWatchStatus(ToDisplayText(host::PathUtils::GetFullFilePart(folder)), GetWatchStatus()));
    mProduction->setToolTip(ToDisplayText(folder));
}

}  // namespace desk
