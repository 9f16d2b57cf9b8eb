#include "desk/project/production/TrashMoves.h"

#include <functional>
#include <utility>

#include "host/core/Logging.h"
#include "host/project/ProductionItems.h"

namespace desk {

namespace {

std::function<void(const host::UTF16StringVec&)> sTryToMoveToTrash;

}  // namespace

bool CanMoveToTrash() {
    return static_cast<bool>(sTryToMoveToTrash);
}

bool TryToMoveToTrash(const host::UTF16StringVec& paths) {
    // It may be taken away while it runs.
    const auto function = sTryToMoveToTrash;
    if (!function) return false;
    try {
        function(paths);
    } catch (...) {
        host::LogCurrentException(__PRETTY_FUNCTION__);
    }
    return true;
}

}  // namespace desk

namespace host {

void Scripting::SetTryToMoveToSharedProjectsTrashFn(std::function<void(const UTF16StringVec& paths)> fn) {
    desk::sTryToMoveToTrash = std::move(fn);
}

}  // namespace host
