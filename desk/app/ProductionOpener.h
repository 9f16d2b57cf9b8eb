#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <string>

namespace desk {

/// Opens productions without waiting for a volume on the UI thread: a worker makes the folder or looks at it,
/// then the production is opened, though not while long work (`RunLongWork`) is under way. The one that is open
/// already stays as it is. The last one that was asked for counts: who asked earlier is told at once that it
/// comes to nothing. UI thread.
class ProductionOpener {
public:
    /// What came of it: the folder, and what went wrong in words; then the open production has stayed.
    struct Result {
        std::string mFolder;
        QString mProblem;
        bool mIsMissing = false;
        /// The user wants to keep a project of the production open that would have been closed.
        bool mIsCancelled = false;
        /// Another production was asked for before this one could be opened.
        bool mIsSuperseded = false;
    };
    /// Called once, unless the opener is gone; not within the call that asks.
    using Done = std::function<void(const Result&)>;
    /// Runs on a worker; returns the folder to open. What it throws is told as the problem.
    using MakeFolder = std::function<std::string()>;

    ProductionOpener();
    /// Results that come later are dropped.
    ~ProductionOpener();

    void Open(const std::string& folder, Done done);
    /// Makes a new production: the folder, with a trash folder of that name (bytes) in it.
    void Create(const std::string& folder, const std::string& trashName, Done done);
    void Open(MakeFolder makeFolder, Done done);
    bool IsBusy() const;

private:
    struct State;
    std::shared_ptr<State> mState;
};

}  // namespace desk
