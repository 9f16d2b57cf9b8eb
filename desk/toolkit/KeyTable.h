#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/core/Export.h"

namespace desk {

/// The host's key tables: which keys carry which of the host's key values (`host::UI_KeyboardEvent`). They are
/// a resource (":/keytables.json"); one is chosen at a time. A key that is not in the chosen table does what it
/// does in the view. UI thread.
class ZUHOST_API KeyTable {
public:
    /// Return and the keypad's Enter begin a rename; the first choice.
    static constexpr char kReturnRenames[] = "return-renames";
    /// Return opens.
    static constexpr char kReturnOpens[] = "return-opens";

    static KeyTable& Instance();

    /// Chooses a table by its ID; an unknown ID changes nothing, and is logged.
    void Choose(const std::string& id);
    const std::string& GetChosen() const { return mChosen; }

    /// The key value of a key without modifiers (`Qt::Key`) in the chosen table.
    std::optional<int> FindCode(int key) const;

private:
    KeyTable();

    std::map<std::string, std::map<int, int>> mTables;
    std::string mChosen = kReturnRenames;
};

}  // namespace desk
