#include "benchmarks/BenchApplication.h"

#include <QEventLoop>
#include <QPaintEvent>
#include <QTimer>
#include <QWidget>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>

namespace bench {

double Milliseconds(Clock::time_point start, Clock::time_point end) {
    return std::chrono::duration<double, std::milli>(end - start).count();
}

namespace {

/// The offscreen platform says of every window that it cannot tell its size hints.
void WriteMessage(QtMsgType, const QMessageLogContext&, const QString& text) {
    if (!text.contains(QLatin1String("propagateSizeHints"))) std::fprintf(stderr, "%s\n", qPrintable(text));
}

}  // namespace

BenchApplication::BenchApplication(int& argc, char** argv) : QApplication(argc, argv) {
    qInstallMessageHandler(WriteMessage);
}

BenchApplication& BenchApplication::Instance() {
    return *static_cast<BenchApplication*>(instance());
}

Clock::time_point BenchApplication::RunUntilPainted(QWidget& widget, std::function<bool(const QRegion&)> isDone,
                                                    std::chrono::seconds timeout, const char* what) {
    QEventLoop loop;
    Clock::time_point end{};
    mWatched = &widget;
    mPainted = [&](const QRegion& region) {
        const auto now = Clock::now();
        if (end != Clock::time_point{} || !isDone(region)) return;
        end = now;
        loop.quit();
    };
    QTimer::singleShot(timeout, &loop, [&loop] { loop.quit(); });
    loop.exec();
    mWatched = nullptr;
    mPainted = nullptr;
    if (end == Clock::time_point{}) throw std::runtime_error(std::string("not painted in time: ") + what);
    return end;
}

void BenchApplication::RunFor(std::chrono::milliseconds time) {
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, [&loop] { loop.quit(); });
    loop.exec();
}

bool BenchApplication::notify(QObject* receiver, QEvent* event) {
    if (receiver != mWatched || event->type() != QEvent::Paint) return QApplication::notify(receiver, event);
    const QRegion region = static_cast<QPaintEvent*>(event)->region();
    const bool result = QApplication::notify(receiver, event);
    if (mPainted) mPainted(region);
    return result;
}

}  // namespace bench
