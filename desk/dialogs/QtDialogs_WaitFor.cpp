// Waiting for long work with the window alive.

#include <QEventLoop>
#include <QGuiApplication>
#include <QLabel>
#include <QProgressDialog>
#include <QPushButton>
#include <QTimer>
#include <chrono>

#include "desk/core/language/Localized.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/dialogs/DialogParts.h"
#include "desk/dialogs/QtDialogs.h"
#include "desk/toolkit/Theme.h"

namespace desk {

namespace {

using namespace std::chrono_literals;

constexpr auto kInterval = 20ms;
constexpr auto kBeforeDialog = 500ms;
constexpr int kBarSteps = 1000;

bool IsReady(const std::future<void>& done) {
    return done.wait_for(0s) == std::future_status::ready;
}

/// Shows that the program is at work, before there is a dialog.
struct BusyCursor {
    BusyCursor() { QGuiApplication::setOverrideCursor(Qt::BusyCursor); }
    ~BusyCursor() { QGuiApplication::restoreOverrideCursor(); }
};

/// Handles events, but no input, until the work is done or `patience` has passed.
void WaitWithoutInput(const std::future<void>& done, std::chrono::milliseconds patience) {
    const BusyCursor busy;
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (IsReady(done)) loop.quit();
    });
    poll.start(kInterval);
    QTimer::singleShot(patience, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

void ShowProgress(QProgressDialog& dialog, const WorkProgress& progress) {
    const WorkProgress::State state = progress.Get();
    dialog.setLabelText(ToDisplayText(state.mItem));
    const bool isKnown = state.mBytesTotal > 0;
    dialog.setMaximum(isKnown ? kBarSteps : 0);
    if (isKnown) dialog.setValue(int(double(state.mBytesDone) / double(state.mBytesTotal) * (kBarSteps - 1)));
}

}  // namespace

void QtDialogs::WaitFor(const host::UTF16String& title, WorkProgress& progress, const std::future<void>& done) {
    WaitWithoutInput(done, kBeforeDialog);
    if (IsReady(done)) return;
    QProgressDialog dialog({}, {}, 0, 0, FindParentWindow());
    auto* cancel = new QPushButton(Localized("$$$/Desk/Dialogs/Cancel=Cancel"));
    dialog.setCancelButton(cancel);
    dialog.setWindowTitle(ToWindowTitle(ToDisplayText(title)));
    dialog.setWindowModality(Qt::ApplicationModal);
    dialog.setAutoClose(false);
    dialog.setAutoReset(false);
    dialog.setMinimumWidth(420);
    auto* item = new QLabel;
    item->setTextFormat(Qt::PlainText);
    dialog.setLabel(item);
    const QString cancelling = Localized("$$$/Desk/Dialogs/Cancelling=Cancelling…");
    // The dialog gives the button room once only.
    const QString text = cancel->text();
    cancel->setText(cancelling);
    cancel->setMinimumWidth(cancel->sizeHint().width());
    cancel->setText(text);
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (IsReady(done)) loop.quit();
        ShowProgress(dialog, progress);
    });
    // The work ends at its own next step; until then the dialog stays.
    QObject::connect(&dialog, &QProgressDialog::canceled, &dialog, [&] {
        progress.Cancel();
        cancel->setText(cancelling);
        cancel->setEnabled(false);
        dialog.show();
    });
    poll.start(kInterval);
    ShowProgress(dialog, progress);
    dialog.show();
    loop.exec();
}

}  // namespace desk
