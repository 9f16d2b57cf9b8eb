#pragma once

#include <QApplication>
#include <QRegion>
#include <chrono>
#include <functional>

namespace bench {

using Clock = std::chrono::steady_clock;

/// Milliseconds from `start` to `end`.
double Milliseconds(Clock::time_point start, Clock::time_point end);

/// The application of the benchmarks: sees each paint of a widget when it is done. UI thread.
class BenchApplication : public QApplication {
public:
    BenchApplication(int& argc, char** argv);
    static BenchApplication& Instance();

    /// Runs the event loop until `widget` has been painted and `isDone` says true of what it shows now;
    /// returns the time at which that paint ended. Throws std::runtime_error naming `what` after a timeout.
    Clock::time_point RunUntilPainted(QWidget& widget, std::function<bool(const QRegion& painted)> isDone,
                                      std::chrono::seconds timeout, const char* what);
    /// Runs the event loop for a while.
    void RunFor(std::chrono::milliseconds time);

    bool notify(QObject* receiver, QEvent* event) override;

private:
    QObject* mWatched = nullptr;
    std::function<void(const QRegion&)> mPainted;
};

}  // namespace bench
