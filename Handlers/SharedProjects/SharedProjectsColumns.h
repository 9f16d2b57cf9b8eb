#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <optional>
#include <vector>

#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "host/project/KnownProjects.h"
#include "host/toolkit/Drawbot.h"
#include "host/toolkit/UI_MultiColumnTree.h"

namespace HandlerSharedProjects {

/// The columns of both trees: what is known of a project, its texts and sort keys, the header row and the
/// cells. UI thread, but for `GetPathDisplayName`.
namespace Columns {

inline constexpr ColumnID kNameColumnID = 0x4E616D65;
inline constexpr ColumnID kLockedColumnID = 0x4C6F636B;
inline constexpr ColumnID kModifiedDateColumnID = 0x4D6F6444;
inline constexpr ColumnID kCreationDateColumnID = 0x43727444;
inline constexpr ColumnID kSizeColumnID = 0x53697A65;

using HeaderRowRef = RefPtr<UI_MultiColumnTreeHeaderRow>;
using ColumnWidths = std::map<ColumnID, float>;

/// What the columns show of one project. A record that was not updated yet, and one without a path, shows
/// empty cells.
struct FileMetadata {
    FileMetadata() = default;
    explicit FileMetadata(UTF16String path);
    /// With all that is known already.
    FileMetadata(UTF16String path, const KnownProject& known);

    /// Reads all facts, or only that of `column`, from what the host knows of the file. A fact that is not
    /// known yet, or no longer because the file is gone, keeps its value. Failures are logged. Returns true
    /// when the fact of `column` has changed.
    bool Update(bool updateAll, ColumnID column);

    /// The text of the cell; empty for unknown columns and facts.
    UTF16String GetColumnDisplayString(ColumnID column) const;
    /// The key that `SortStringIsLess` compares.
    UTF16String GetColumnDataAsSortableString(ColumnID column) const;
    /// The lock as the name cell shows it: absent when the project is not locked, else `mLockFlag`.
    std::optional<bool> GetLockState() const;

    /// Somebody holds the project's lock.
    bool mLocked = false;
    /// With `mLocked`: the current user holds it, so that the project can be edited here.
    bool mLockFlag = false;
    UTF16String mPath;
    UTF16String mDisplayName;
    /// Empty when not locked, and while the holder's name is not known yet.
    UTF16String mLockedBy;
    /// Seconds since the epoch.
    std::optional<std::time_t> mModified;
    std::optional<std::time_t> mCreated;
    /// In bytes.
    std::optional<std::uint64_t> mSize;

private:
    void SetLock(const IProjectLockFile* lock);
    void UpdateLock();
    void UpdateFileFacts(bool updateAll, ColumnID column);
};

// Paths tell by their names what they name: a folder that is called like a project comes with a separator at
// the end of its path.

/// The name as users see it: a project's without its extension, any other item's last component. Any thread.
UTF16String GetPathDisplayName(const UTF16String& path);
/// The same, but the production's trash has its name in the user's language.
UTF16String GetShownName(const UTF16String& path);

/// The name of a project's file as users see it: without its extension. Any thread.
std::u16string_view GetDisplayName(std::u16string_view projectFileName);
/// True for a sort string that stands behind all others: the display name of the production's trash, ASCII
/// letter case ignored.
bool IsSortedLast(std::u16string_view sortString);
/// Natural order, but the production's trash folder sorts after everything else.
bool SortStringIsLess(const UTF16String& a, const UTF16String& b);

/// True for the columns whose keys are numbers: dates and sizes.
bool IsNumberColumn(ColumnID column);
/// What orders projects in such a column as their keys do. What is not known yet comes first.
std::uint64_t GetSortNumber(const KnownProject& project, ColumnID column);

/// The layout of a header row: columns from left to right, their widths at zoom 0, and the sorting.
struct ColumnData {
    ColumnID mColumnID = 0;
    float mWidth = 0;
    friend bool operator==(const ColumnData&, const ColumnData&) = default;
};
struct HeaderRowData {
    std::vector<ColumnData> mColumnDataList;
    ColumnID mSortColumnID = 0;
    bool mSortAscending = true;
    friend bool operator==(const HeaderRowData&, const HeaderRowData&) = default;
};

/// Gives a new header row the panel's columns. Empty callbacks leave the control's own behaviour.
void SetupHeaderRow(const HeaderRowRef& headerRow,
                    const SharedFunction<bool(const UTF16String&, const UTF16String&)>& sortLess,
                    const SharedFunction<void(ColumnID, bool)>& userChangedSort);

/// Sets each column's allowed minimum width to the current tunable.
void SetColumnMinimumWidths(const HeaderRowRef& headerRow);

/// True when the column at a display position is the Name column.
bool IsNameColumn(const HeaderRowRef& headerRow, unsigned index);

/// Sets the widths of the columns in the map to width x `scale`; other columns keep theirs.
void SetColumnWidths(const HeaderRowRef& headerRow, const ColumnWidths& widths, float scale);

/// Makes `to` look like `from`: sorting, order and displayed widths.
void SyncColumnProperties(const HeaderRowRef& from, const HeaderRowRef& to);

/// Takes the layout of a header row; widths come from `baseWidths`, not from the screen.
HeaderRowData GetHeaderRowData(const HeaderRowRef& headerRow, const ColumnWidths& baseWidths);

/// Applies a layout, with its widths x `scale`. Columns that the layout does not name follow those it does.
void SetUpHeaderRowFromData(const HeaderRowRef& headerRow, const HeaderRowData& data, float scale);

/// Leaves of a layout from a file what can be used: the panel's columns, each once. A width that is none
/// becomes that of a new column.
void MakeUsable(HeaderRowData& data);

/// The display positions of the metadata columns, by the keys under which they are recorded.
std::map<std::string_view, int> GetViewPropertyLoggingColumnMap(const HeaderRowRef& headerRow);

/// What a row's icon tells.
enum class IconState {
    Folder = 0,
    Trash = 1,
    ClosedNoLock = 2,
    ClosedLocked = 3,
    OpenNoLock = 4,
    OpenLocked = 5,
    OpenEditable = 6,
};
/// The icon of an item; `lockState` as `FileMetadata::GetLockState` gives it.
IconState GetIconState(const UTF16String& path, std::optional<bool> lockState);

/// Puts icon and name into the Name cell of a visible row, in place of what is there; nothing for a row that
/// is not visible.
void AddNameCellView(const UI_MultiColumnTree& tree, const RowRef& row, const UTF16String& path,
                     std::optional<bool> lockState);

/// The rectangle of the name in a Name cell; all zero when the cell has no name.
RectT<float> GetNameTextRectFromView(const UI_Container* cellView);

/// The size of the font (in view units) for a cell.
float GetFontSizeFromCellRect(const RectT<float>& cell);

/// Draws the cell at display position `columnIndex` of a project's row; nothing for the Name column.
void DrawMetadataCellOfRow(Drawbot& drawbot, const FileMetadata& metadata, unsigned columnIndex,
                           const RectT<float>& cell, const HeaderRowRef& headerRow);

/// What the cell at display position `columnIndex` says to assistive technology, with the states that the
/// icon and the font show put in words; `metadata` is null for a folder.
UTF16String GetCellAccessibleText(const HeaderRowRef& headerRow, unsigned columnIndex, const UTF16String& path,
                                  const FileMetadata* metadata);

/// Lets go of the folder picture that all name cells share.
void ClearGenericFolderIcon();

}  // namespace Columns
}  // namespace HandlerSharedProjects
