#pragma once

#include <QAbstractScrollArea>

#include "desk/core/edges/MainThread.h"

namespace desk {

/// A small turning arc over a view's content: something is under way. Lets clicks through. UI thread.
class BusySpinner : public QWidget {
public:
    explicit BusySpinner(QAbstractScrollArea& view);
    ~BusySpinner() override;

    /// `alignment`: 0 in the top right corner, 1 in the centre.
    void Start(int alignment);
    void Stop();
    /// The view has another size.
    void Place();

protected:
    void paintEvent(QPaintEvent*) override;

private:
    QAbstractScrollArea& mView;
    int mAlignment = 0;
    int mStep = 0;
    MainThread::TimerID mTimer = 0;
};

}  // namespace desk
