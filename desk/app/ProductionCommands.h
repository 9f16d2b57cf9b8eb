#pragma once

#include <string>

#include "desk/app/ProductionOpener.h"
#include "host/core/Strings.h"

class QMenu;

namespace desk {

class RecentProductions;
class StatusLine;

/// The commands of the Production menu: New, Open, Open Recent, Close. UI thread.
class ProductionCommands {
public:
    /// `recent` is null when nothing is to be remembered.
    ProductionCommands(StatusLine& statusLine, RecentProductions* recent);
    /// Gives the commands up.
    ~ProductionCommands();

    /// Opens the production that the program starts with. What goes wrong stands in the status bar; `done`
    /// may be empty, and is called also when the user opens another one before.
    void OpenAtStart(const std::string& folder, ProductionOpener::Done done);
    /// The same with the sample production, which is made when it is not there.
    void OpenSample(ProductionOpener::Done done);
    /// True while a production is being opened.
    bool IsOpening() const { return mOpener.IsBusy(); }
    /// Fills the menu of recent productions anew.
    void FillRecentMenu(QMenu& menu);

private:
    void New();
    void Open();
    void OpenRecent(const std::string& folder);
    void Close();
    /// Follows an opening that the user asked for; `title` is a localisation key.
    ProductionOpener::Done ShowResult(const char* title);
    ProductionOpener::Done ShowResultAtStart(ProductionOpener::Done done);
    void ShowOutcomeAtStart(const ProductionOpener::Result& result);
    void Opened(const std::string& folder);
    host::UTF16String FindUsualPlace() const;
    void SetOpening(const std::string& folder);

    StatusLine& mStatusLine;
    RecentProductions* mRecent;
    ProductionOpener mOpener;
};

}  // namespace desk
