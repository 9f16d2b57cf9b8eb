#pragma once

#include <QObject>

#include "host/core/Export.h"

class QKeyEvent;

namespace desk {

/// Tells whether a key is pressed anew or only held down. The event's own word is not enough: X11 repeats a key
/// as a release and a press at the same time, and Qt takes them for a repetition only when it reads both at
/// once. Follows the application's keys while it exists. UI thread.
class ZUHOST_API HeldKey : public QObject {
public:
    explicit HeldKey(QObject* parent);

    /// About the key that was pressed last.
    bool IsHeld() const { return mIsHeld; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Pressed(const QKeyEvent& event);

    bool mIsHeld = false;
    int mReleasedKey = 0;
    /// In the window system's milliseconds; 0 when it does not tell.
    quint64 mReleaseTime = 0;
};

}  // namespace desk
