#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <functional>
#include <string>

class QWidget;

namespace desk {

/// Takes a picture of a window once the open production's rows are shown with their facts: its root is listed,
/// and neither workers nor views have had anything to do for a while. UI thread.
class Screenshot {
public:
    /// Told once: empty when the picture was written, else what went wrong, in one line.
    using Done = std::function<void(const std::string& error)>;

    /// Writes a PNG file to `path` (bytes). `window` must outlive it.
    Screenshot(QWidget& window, std::string path, Done done);

private:
    void Look();
    bool AreRowsShown() const;
    std::string Write() const;

    QWidget& mWindow;
    std::string mPath;
    Done mDone;
    QTimer mTimer;
    QElapsedTimer mSinceStart;
    QElapsedTimer mSinceBusy;
};

}  // namespace desk
