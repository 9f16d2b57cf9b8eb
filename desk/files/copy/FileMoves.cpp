#include "desk/files/copy/FileMoves.h"

#include <exception>
#include <utility>
#include <vector>

#include "host/core/Logging.h"

namespace desk {

namespace {

std::vector<MoveObserver>& Observers() {
    static std::vector<MoveObserver> sObservers;
    return sObservers;
}

}  // namespace

void AddMoveObserver(MoveObserver observer) {
    Observers().push_back(std::move(observer));
}

void NoteMove(const MovedItem& item) {
    // One may add another.
    const std::vector<MoveObserver> observers = Observers();
    for (const MoveObserver& observer : observers) {
        try {
            observer(item);
        } catch (...) {
            host::LogCurrentException(__PRETTY_FUNCTION__);
        }
    }
}

}  // namespace desk
