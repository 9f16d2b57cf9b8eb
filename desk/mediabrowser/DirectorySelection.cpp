#include "desk/mediabrowser/DirectorySelection.h"

#include <vector>

#include "host/mediabrowser/MediaBrowserDirectoryView.h"

namespace desk {
namespace {

std::vector<const host::MediaBrowserDirectoryView*>& Views() {
    static std::vector<const host::MediaBrowserDirectoryView*> sViews;
    return sViews;
}

}  // namespace

void AddDirectoryView(const host::MediaBrowserDirectoryView& view) {
    Views().push_back(&view);
}

void RemoveDirectoryView(const host::MediaBrowserDirectoryView& view) {
    std::erase(Views(), &view);
}

DirectorySelection GetDirectorySelection() {
    for (const host::MediaBrowserDirectoryView* view : Views()) {
        if (!view->UI_IsShown()) continue;
        const host::RowRef alone = view->GetTree()->GetOnlySelectedRow();
        return {view->GetTree()->CountSelectedRows(), view->GetRowPath(alone.get())};
    }
    return {};
}

}  // namespace desk
