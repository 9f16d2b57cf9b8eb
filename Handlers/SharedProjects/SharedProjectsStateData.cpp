#include "Handlers/SharedProjects/SharedProjectsStateData.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "host/core/Logging.h"
#include "host/files/PathUtils.h"

namespace HandlerSharedProjects {

namespace {

constexpr char16_t kByteOrderMark = 0xFEFF;
constexpr std::size_t kLongestSearchText = 1000;
/// Of screens, and of windows on them, in view units.
constexpr int kFarthestEdge = 100'000;

/// The normalised path when it lies in `folder`, which ends in a separator; else empty.
UTF16String FindPathIn(const UTF16String& folder, const UTF16String& path) {
    UTF16String normalized = PathUtils::ToNormalizedPath(path);
    return normalized.starts_with(folder) ? normalized : UTF16String();
}

void KeepPathsIn(const UTF16String& folder, UTF16StringVec& paths) {
    for (UTF16String& path : paths) path = FindPathIn(folder, path);
    std::erase(paths, UTF16String());
}

bool IsWithin(int value, int least) {
    return value >= least && value <= kFarthestEdge;
}

bool IsUsable(const Rect& rect) {
    return IsWithin(rect.x, -kFarthestEdge) && IsWithin(rect.y, -kFarthestEdge) && IsWithin(rect.width, 1) &&
           IsWithin(rect.height, 1);
}

/// Absent when the text is no record.
std::optional<SharedProjectsTabView::StateData> ReadLayout(const UTF16String& text,
                                                           const UTF16String& production) {
    try {
        SharedProjectsTabView::StateData state;
        FromJSON(JSONParse(text), state);
        MakeUsable(state, production);
        return state;
    } catch (const std::exception& exception) {
        LogException(std::runtime_error("The record of \"" + UTF16to8(production) +
                                        "\" cannot be used: " + exception.what()),
                     __PRETTY_FUNCTION__);
        return {};
    }
}

}  // namespace

namespace Columns {

JSONVariant ToJSON(const ColumnData& data) {
    JSONObject object;
    AddToObject(object, "mColumnID", data.mColumnID);
    AddToObject(object, "mWidth", data.mWidth);
    return object;
}

void FromJSON(const JSONVariant& json, ColumnData& data) {
    const JSONObject& object = GetObject(json);
    GetFromObject(object, "mColumnID", data.mColumnID);
    GetFromObject(object, "mWidth", data.mWidth);
}

JSONVariant ToJSON(const HeaderRowData& data) {
    JSONObject object;
    AddToObject(object, "mColumnDataList", data.mColumnDataList);
    AddToObject(object, "mSortColumnID", data.mSortColumnID);
    AddToObject(object, "mSortAscending", data.mSortAscending);
    return object;
}

void FromJSON(const JSONVariant& json, HeaderRowData& data) {
    const JSONObject& object = GetObject(json);
    GetFromObject(object, "mColumnDataList", data.mColumnDataList);
    GetFromObject(object, "mSortColumnID", data.mSortColumnID);
    GetFromObject(object, "mSortAscending", data.mSortAscending);
}

}  // namespace Columns

JSONVariant ToJSON(const SharedProjectsDirectoryView::StateData& data) {
    JSONObject object;
    AddToObject(object, "mOpenFolderPaths", data.mOpenFolderPaths);
    AddToObject(object, "mSelectedRowPaths", data.mSelectedRowPaths);
    AddToObject(object, "mHeaderRowData", data.mHeaderRowData);
    AddToObject(object, "mTopVisibleRowPath", data.mTopVisibleRowPath);
    return object;
}

void FromJSON(const JSONVariant& json, SharedProjectsDirectoryView::StateData& data) {
    const JSONObject& object = GetObject(json);
    GetFromObject(object, "mOpenFolderPaths", data.mOpenFolderPaths);
    GetFromObject(object, "mSelectedRowPaths", data.mSelectedRowPaths);
    GetFromObject(object, "mHeaderRowData", data.mHeaderRowData);
    GetFromObject(object, "mTopVisibleRowPath", data.mTopVisibleRowPath);
}

JSONVariant ToJSON(const SharedProjectsTabView::StateData& data) {
    JSONObject object;
    AddToObject(object, "mDirectoryViewData", data.mDirectoryViewData);
    AddToObject(object, "mZoom", data.mZoom);
    AddToObject(object, "mDockedInMainWindow", data.mDockedInMainWindow);
    AddToObject(object, "mFloatingWindowGlobalRect", data.mFloatingWindowGlobalRect);
    AddToObject(object, "mSearchText", data.mSearchText);
    return object;
}

void FromJSON(const JSONVariant& json, SharedProjectsTabView::StateData& data) {
    const JSONObject& object = GetObject(json);
    GetFromObject(object, "mDirectoryViewData", data.mDirectoryViewData);
    GetFromObject(object, "mZoom", data.mZoom);
    GetFromObject(object, "mDockedInMainWindow", data.mDockedInMainWindow);
    GetFromObject(object, "mFloatingWindowGlobalRect", data.mFloatingWindowGlobalRect);
    GetFromObject(object, "mSearchText", data.mSearchText);
}

void MakeUsable(SharedProjectsTabView::StateData& state, const UTF16String& production) {
    const UTF16String folder = PathUtils::AddTrailingSlash(production);
    SharedProjectsDirectoryView::StateData& tree = state.mDirectoryViewData;
    if (tree.mSelectedRowPaths.size() > kMostRememberedPaths) tree.mSelectedRowPaths.clear();
    tree.mOpenFolderPaths.resize(std::min(tree.mOpenFolderPaths.size(), kMostRememberedPaths));
    KeepPathsIn(folder, tree.mSelectedRowPaths);
    KeepPathsIn(folder, tree.mOpenFolderPaths);
    tree.mTopVisibleRowPath = FindPathIn(folder, tree.mTopVisibleRowPath);
    Columns::MakeUsable(tree.mHeaderRowData);
    // Not "outside": nothing compares with what is no number.
    if (!(state.mZoom >= 0 && state.mZoom <= 1)) state.mZoom = 0;
    if (!IsUsable(state.mFloatingWindowGlobalRect)) state.mFloatingWindowGlobalRect = {};
    if (state.mSearchText.size() > kLongestSearchText) state.mSearchText.clear();
}

JSONMemberTexts ParseLayouts(const std::string& bytes) {
    if (bytes.size() % sizeof(char16_t) != 0) throw JSONParseError("it has half a UTF-16 unit");
    std::u16string text(bytes.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), bytes.data(), bytes.size());
    std::u16string_view json = text;
    if (json.starts_with(kByteOrderMark)) json.remove_prefix(1);
    return JSONParseMembers(json);
}

std::string FormatLayouts(const JSONMemberTexts& layouts) {
    const UTF16String text = GetJSONString(layouts);
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

std::optional<SharedProjectsTabView::StateData> FindLayout(const JSONMemberTexts& layouts,
                                                           const UTF16String& production) {
    const std::string path = UTF16to8(production);
    if (const auto own = layouts.find(path); own != layouts.end())
        if (auto state = ReadLayout(own->second, production)) return state;
    for (const auto& [key, text] : layouts)
        if (key != path && PathUtils::ToNormalizedPath(UTF8to16(key)) == production)
            if (auto state = ReadLayout(text, production)) return state;
    return {};
}

}  // namespace HandlerSharedProjects
