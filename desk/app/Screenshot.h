#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <functional>
#include <string>

class QWidget;

namespace desk {

/// Takes a picture of a window once the production is open and its rows are shown with their facts: its root is
/// listed, nobody has anything left to do, and what came last is painted. Gives up after 30 seconds. UI thread.
class Screenshot {
public:
    /// Told once: empty when the picture was written, else what went wrong, in one line.
    using Done = std::function<void(const std::string& error)>;

    /// Writes a PNG file to `path` (bytes). `isOpening` tells whether a production is still being opened,
    /// `isIdle` whether the UI thread has nothing to do and nothing to expect soon. `window` must outlive it.
    Screenshot(QWidget& window, std::string path, std::function<bool()> isOpening, std::function<bool()> isIdle,
               Done done);

private:
    void Look();
    bool AreRowsShown() const;
    bool IsQuiet();
    std::string Write() const;

    QWidget& mWindow;
    std::string mPath;
    std::function<bool()> mIsOpening;
    std::function<bool()> mIsIdle;
    Done mDone;
    QTimer mTimer;
    QElapsedTimer mSinceStart;
    /// Times in a row that nothing was found to be going on.
    int mQuietLooks = 0;
    std::size_t mTasks = 0;
};

}  // namespace desk
