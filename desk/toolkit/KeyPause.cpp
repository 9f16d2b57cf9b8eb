#include "desk/toolkit/KeyPause.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"

namespace desk {

namespace {

class KeyStop : public QObject {
public:
    explicit KeyStop(QObject* parent) : QObject(parent) { parent->installEventFilter(this); }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        switch (event->type()) {
            case QEvent::ShortcutOverride:
            case QEvent::KeyPress:
            case QEvent::InputMethod:
                event->accept();
                return true;
            default:
                return false;
        }
    }
};

}  // namespace

void PauseKeys(std::chrono::milliseconds time) {
    const QPointer<QObject> stop = new KeyStop(QCoreApplication::instance());
    GetServices().mMainThread->PostDelayed([stop] { delete stop.data(); }, time);
}

}  // namespace desk
