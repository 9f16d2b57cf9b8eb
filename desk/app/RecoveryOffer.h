#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desk/core/work/Lifetime.h"
#include "desk/files/live/ReadingLane.h"
#include "desk/framework/CommandRouter.h"
#include "desk/project/document/TextKeeper.h"

class QWidget;

namespace desk {

class RecoveryDialog;
class RecoveryRow;

/// Offers the unsaved text that programs have left which did not come to their end: at the start, and by the
/// command Recover Unsaved Text. The offer waits for no volume and writes nothing by itself. UI thread.
class RecoveryOffer {
public:
    /// Both outlive it; `window` is where the list stands over.
    RecoveryOffer(QWidget& window, TextKeeper& keeper);
    /// Gives the command up.
    ~RecoveryOffer();

    /// Shows the list, as soon as the disk of the profile has answered, if programs that are certainly gone
    /// have left something.
    void OfferAtStart();

private:
    CommandStatus FindStatus();
    void LookAgain();
    void Take(std::vector<KeptTextFile> files);
    void ShowAll();
    void ShowDialog();
    std::vector<KeptTextFile> ChooseShown() const;
    void AddRow(RecoveryRow& row);
    void FindOut(const KeptTextFile& file);

    void Open(const KeptTextFile& file);
    bool PutIntoEditor(const KeptText& text, const ProjectDocumentRef& document, const std::string& path);
    void SaveAsCopy(const KeptTextFile& file);
    void Discard(const KeptTextFile& file);
    /// Absent when it is not there any more, or was not read, which the user has been told.
    std::optional<KeptText> Read(const KeptTextFile& file);
    /// The text is taken care of.
    void Settle(const std::string& path);

    QWidget& mWindow;
    TextKeeper& mKeeper;
    std::unique_ptr<RecoveryDialog> mDialog;
    std::vector<KeptTextFile> mFiles;
    /// Also what may be kept by programs that are running elsewhere.
    bool mShowsAll = false;
    std::chrono::steady_clock::time_point mLooked;
    std::shared_ptr<ReadingLane> mLane = std::make_shared<ReadingLane>();
    Lifetime mLifetime;
};

}  // namespace desk
