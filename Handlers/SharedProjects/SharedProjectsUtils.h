#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string_view>

#include "host/core/Geometry.h"
#include "host/core/Strings.h"
#include "host/toolkit/UI_MultiColumnTree.h"

namespace HandlerSharedProjects {

using namespace host;

/// The production's background colour of rows, in the host's colour table.
inline constexpr int kRowBackgroundColorID = 277;

/// What both trees and the panel's commands share: usage events, questions about paths, page moves. UI thread.
namespace Utils {

/// The state of the panel's view that goes with a view-property event.
struct ViewPropertyLoggingData {
    /// In view units.
    float mRowHeight = 0;
    /// Display positions of the metadata columns by their keys; negative for a column that is not there.
    std::map<std::string_view, int> mColumnIndices;
};

/// Records a usage event under the production's category; nothing while usage is not recorded.
void LogUsage(const char* category, const char* action);

/// Records that the user has changed a property of the view ("Zoom", "ColumnOrder").
void LogViewPropertyUsage(const char* property, const ViewPropertyLoggingData& data);

/// True for a project that is open read-only and whose file on disk is newer than what was read.
bool IsRefreshable(const UTF16String& path);

/// True for a path inside the production's trash; with `includeTrashFolder` for the trash folder too.
bool IsInTrash(const UTF16String& path, bool includeTrashFolder);

/// The bits of a path-type mask.
inline constexpr int kPathTypeFile = 1;
inline constexpr int kPathTypeFolder = 2;
inline constexpr int kPathTypeTrashFolder = 4;
inline constexpr int kPathTypeInTrash = 8;

/// The kinds of the paths, as a mask of the bits above; 0 for no paths. For paths that no listed folder
/// holds it may wait for the volume.
int GetPathTypes(UTF16StringVec paths);

/// Folds the ASCII letters A to Z to lower case; everything else stays. Any thread.
inline char16_t FoldASCII(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
}

/// A framework rectangle in the toolkit's numbers.
inline RectT<float> ToToolkitRect(const Rect& rect) {
    return {static_cast<float>(rect.x), static_cast<float>(rect.y), static_cast<float>(rect.width),
            static_cast<float>(rect.height)};
}

using TreeRef = RefPtr<UI_MultiColumnTree>;

/// Select the first or the last opened row and scroll it into view.
void MoveHome(const TreeRef& tree);
void MoveEnd(const TreeRef& tree);

/// Select the first (last) visible row; when just that one is selected, the row a page before (after) it.
void MovePageUp(const TreeRef& tree);
void MovePageDown(const TreeRef& tree);

/// A callback that runs `member` of `view` as long as `lifetime` lives. Queued work keeps trees alive longer
/// than their views; a callback that comes after the view's end answers a default value.
template <class View, class Result, class... Arguments>
SharedFunction<Result(Arguments...)> BindCallback(View* view, Result (View::*member)(Arguments...),
                                                  std::weak_ptr<const void> lifetime) {
    return std::make_shared<std::function<Result(Arguments...)>>(
        [view, member, lifetime = std::move(lifetime)](Arguments... arguments) -> Result {
            if (lifetime.expired()) return Result();
            return (view->*member)(arguments...);
        });
}

}  // namespace Utils
}  // namespace HandlerSharedProjects
