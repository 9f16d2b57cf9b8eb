#include "desk/toolkit/EmptyButtons.h"

#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/Callback.h"
#include "desk/toolkit/Theme.h"

namespace desk {

EmptyButtons::EmptyButtons(QWidget& viewport) : QWidget(&viewport) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    hide();
}

void EmptyButtons::Set(const std::vector<host::UI_EmptyButton>& buttons) {
    // One of them may be the one whose click has led here.
    for (QPushButton* button : findChildren<QPushButton*>()) {
        button->hide();
        layout()->removeWidget(button);
        button->deleteLater();
    }
    QWidget* before = parentWidget()->parentWidget();
    for (const host::UI_EmptyButton& button : buttons) {
        auto* widget = new QPushButton(ToDisplayText(button.mText), this);
        // Return presses it too, and Tab comes to it from the tree.
        widget->setAutoDefault(true);
        setTabOrder(std::exchange(before, widget), widget);
        connect(widget, &QPushButton::clicked, this,
                [pressed = button.mPressed] { GetServices().mMainThread->Post([pressed] { Call(pressed); }); });
        layout()->addWidget(widget);
    }
    parentWidget()->update();
}

void EmptyButtons::FollowLater(bool isShown, int top) {
    mIsShown = isShown && layout()->count() > 0;
    mTop = top;
    const bool isInPlace = mIsShown == !isHidden() && (!mIsShown || (y() == mTop && sizeHint() == size()));
    if (isInPlace || std::exchange(mIsQueued, true)) return;
    QMetaObject::invokeMethod(
        this, [this] { Follow(); }, Qt::QueuedConnection);
}

void EmptyButtons::Follow() {
    mIsQueued = false;
    if (mIsShown) {
        adjustSize();
        move((parentWidget()->width() - width()) / 2, mTop);
    }
    setVisible(mIsShown);
}

}  // namespace desk
