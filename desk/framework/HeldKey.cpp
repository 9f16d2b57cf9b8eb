#include "desk/framework/HeldKey.h"

#include <QCoreApplication>
#include <QKeyEvent>

namespace desk {

HeldKey::HeldKey(QObject* parent) : QObject(parent) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool HeldKey::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) Pressed(static_cast<const QKeyEvent&>(*event));
    if (event->type() == QEvent::KeyRelease) {
        mReleasedKey = static_cast<const QKeyEvent*>(event)->key();
        mReleaseTime = static_cast<const QKeyEvent*>(event)->timestamp();
    }
    return false;
}

void HeldKey::Pressed(const QKeyEvent& event) {
    constexpr quint64 kNobodyIsSoQuick = 2;
    const bool isRightAfterRelease = event.key() == mReleasedKey && mReleaseTime > 0 &&
                                     event.timestamp() >= mReleaseTime &&
                                     event.timestamp() - mReleaseTime <= kNobodyIsSoQuick;
    mIsHeld = event.isAutoRepeat() || isRightAfterRelease;
}

}  // namespace desk
