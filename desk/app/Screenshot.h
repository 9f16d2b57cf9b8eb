#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <functional>
#include <string>

class QWidget;

namespace desk {

/// Takes a picture of a window once the production is open and its rows are shown with their facts: its root is
/// listed, and the workers have had nothing to do for a while. Gives up after 30 seconds. UI thread.
class Screenshot {
public:
    /// Told once: empty when the picture was written, else what went wrong, in one line.
    using Done = std::function<void(const std::string& error)>;

    /// Writes a PNG file to `path` (bytes). `isOpening` tells whether a production is still being opened.
    /// `window` must outlive it.
    Screenshot(QWidget& window, std::string path, std::function<bool()> isOpening, Done done);

private:
    void Look();
    bool AreRowsShown() const;
    std::string Write() const;

    QWidget& mWindow;
    std::string mPath;
    std::function<bool()> mIsOpening;
    Done mDone;
    QTimer mTimer;
    QElapsedTimer mSinceStart;
    QElapsedTimer mSinceBusy;
};

}  // namespace desk
