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

host::UTF16StringVec GetPathsSelectedInDirectoryView() {
    for (const host::MediaBrowserDirectoryView* view : Views())
        if (view->UI_IsShown()) return view->GetSelectedPaths();
    return {};
}

}  // namespace desk
