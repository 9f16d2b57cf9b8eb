#pragma once

#include <vector>

#include "desk/files/live/FolderStore.h"

namespace desk {

/// Deliveries of folders' contents that wait until a view may change. UI thread.
class HeldDeliveries {
public:
    void Add(const FolderStore::Delivery& delivery) { mDeliveries.push_back(delivery); }
    void Clear() { mDeliveries.clear(); }
    /// What has been added, and holds it no more: the deliveries of one folder together, folders in the order
    /// in which they first came. What a later whole content replaces is left out, and changes that follow each
    /// other are one, which names each item once, as it stood last.
    std::vector<FolderStore::Delivery> Take();

private:
    std::vector<FolderStore::Delivery> mDeliveries;
};

}  // namespace desk
