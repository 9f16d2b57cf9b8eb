#include "Handlers/SharedProjects/SharedProjectsColumns.h"

#include <algorithm>
#include <ctime>
#include <iterator>
#include <locale>
#include <sstream>

#include "host/core/Locale.h"
#include "host/core/Logging.h"
#include "host/files/File.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionTrash.h"
#include "host/project/ProjectFiles.h"
#include "host/project/ProjectLockFile.h"

namespace HandlerSharedProjects::Columns {

namespace {

/// Sort key of projects that nobody holds, so that they stand together.
constexpr char16_t kUnlockedSortKey[] = u"__UNLOCKED";

UTF16String FormatDate(std::time_t time) {
    std::tm local{};
    if (!localtime_r(&time, &local)) return {};
    std::wostringstream stream;
    stream.imbue(Locale::Native());
    const std::wstring_view pattern = L"%c";
    const auto& formatter = std::use_facet<std::time_put<wchar_t>>(stream.getloc());
    formatter.put(std::ostreambuf_iterator<wchar_t>(stream), stream, L' ', &local, pattern.data(),
                  pattern.data() + pattern.size());
    return WcharToUTF16(stream.str());
}

UTF16String FormatDate(const std::optional<std::time_t>& time) {
    return time ? FormatDate(*time) : UTF16String();
}

UTF16String FormatSortableNumber(const std::optional<std::time_t>& value) {
    return value ? NumberToString(static_cast<long long>(*value)) : UTF16String();
}

/// Exchanges `fact` for `value` when the volume has told it.
template <class T>
void TakeFact(std::optional<T>& fact, const std::optional<T>& value) {
    if (value) fact = value;
}

}  // namespace

FileMetadata::FileMetadata(UTF16String path) : mPath(std::move(path)) {}

FileMetadata::FileMetadata(UTF16String path, const KnownProject& known)
    : mPath(std::move(path)), mModified(known.mModified), mCreated(known.mCreated), mSize(known.mSize) {
    mDisplayName = GetPathDisplayName(mPath);
    SetLock(known.mLock.get());
}

bool FileMetadata::Update(bool updateAll, ColumnID column) {
    const CodeProfilerScope profile("HandlerSharedProjects::Columns::FileMetadata::FileMetadata()");
    const auto previousModified = mModified;
    const auto previousCreated = mCreated;
    const auto previousSize = mSize;
    bool hasNameChanged = false;
    bool hasHolderChanged = false;
    // The path never changes, so neither does a name that has been taken from it.
    if ((updateAll || column == kNameColumnID) && mDisplayName.empty()) {
        mDisplayName = GetPathDisplayName(mPath);
        hasNameChanged = true;
    }
    if (updateAll || column == kLockedColumnID) {
        const UTF16String previousHolder = mLockedBy;
        UpdateLock();
        hasHolderChanged = previousHolder != mLockedBy;
    }
    UpdateFileFacts(updateAll, column);
    switch (column) {
        case kNameColumnID:
            return hasNameChanged;
        case kLockedColumnID:
            return hasHolderChanged;
        case kModifiedDateColumnID:
            return mModified != previousModified;
        case kCreationDateColumnID:
            return mCreated != previousCreated;
        case kSizeColumnID:
            return mSize != previousSize;
        default:
            return false;
    }
}

void FileMetadata::UpdateLock() {
    UTF16String userName;
    UTF16String machineName;
    GetProjectLockingPrefs(userName, machineName);
    SetLock(ReadProjectLockFile(mPath, userName, machineName).get());
}

void FileMetadata::SetLock(const IProjectLockFile* lock) {
    // A lock whose holder is known to be gone is no lock to the user.
    mLocked = lock && lock->IsLocked();
    if (mLocked) {
        mLockedBy = lock->GetLockOwner();
        mLockFlag = lock->IsHeldByReader();
    } else {
        mLockedBy.clear();
    }
}

void FileMetadata::UpdateFileFacts(bool updateAll, ColumnID column) {
    const bool wantsModified = updateAll || column == kModifiedDateColumnID;
    const bool wantsCreated = updateAll || column == kCreationDateColumnID;
    const bool wantsSize = updateAll || column == kSizeColumnID;
    // Asking for a file has its facts read from the volume: only for those who want one.
    if (!wantsModified && !wantsCreated && !wantsSize) return;
    const File file(mPath);
    if (!file.Exists()) return;
    try {
        if (wantsModified) TakeFact(mModified, file.Modified());
        if (wantsCreated) TakeFact(mCreated, file.Created());
        if (wantsSize) TakeFact(mSize, file.Size());
    } catch (const std::exception& exception) {
        LogException(exception, __PRETTY_FUNCTION__);
    }
}

UTF16String FileMetadata::GetColumnDisplayString(ColumnID column) const {
    if (mPath.empty()) return {};
    switch (column) {
        case kNameColumnID:
            return mDisplayName;
        case kLockedColumnID:
            return mLockedBy;
        case kModifiedDateColumnID:
            return FormatDate(mModified);
        case kCreationDateColumnID:
            return FormatDate(mCreated);
        case kSizeColumnID:
            return mSize ? GetDisplayStringOfFileSize(*mSize) : UTF16String();
        default:
            return {};
    }
}

UTF16String FileMetadata::GetColumnDataAsSortableString(ColumnID column) const {
    if (mPath.empty()) return {};
    switch (column) {
        case kNameColumnID:
            return mDisplayName;
        case kLockedColumnID:
            return mLockedBy.empty() ? UTF16String(kUnlockedSortKey) : mLockedBy;
        case kModifiedDateColumnID:
            return FormatSortableNumber(mModified);
        case kCreationDateColumnID:
            return FormatSortableNumber(mCreated);
        case kSizeColumnID:
            return mSize ? AsciiToUTF16(std::to_string(*mSize)) : UTF16String();
        default:
            return {};
    }
}

std::optional<bool> FileMetadata::GetLockState() const {
    return mLocked ? std::optional<bool>(mLockFlag) : std::nullopt;
}

UTF16String GetPathDisplayName(const UTF16String& path) {
    if (path.empty()) return path;
    if (IsVantorProjectFile(path)) return PathUtils::GetFilePart(path);
    return PathUtils::GetFullFilePart(PathUtils::RemoveTrailingSlash(path));
}

UTF16String GetShownName(const UTF16String& path) {
    return IsTheZuProductionTrashDirectory(path) ? GetZuProductionTrashDirectoryDisplayName()
                                                 : GetPathDisplayName(path);
}

std::u16string_view GetDisplayName(std::u16string_view projectFileName) {
    const std::size_t extension = GetProjectFileExtension().size();
    return projectFileName.substr(0, projectFileName.size() - std::min(extension, projectFileName.size()));
}

bool IsSortedLast(std::u16string_view sortString) {
    static const UTF16String kTrashFolderName = GetZuProductionTrashDirectoryDisplayName();
    return sortString.size() == kTrashFolderName.size() && IsEqualFoldingASCII(sortString, kTrashFolderName);
}

bool IsNumberColumn(ColumnID column) {
    return column == kModifiedDateColumnID || column == kCreationDateColumnID || column == kSizeColumnID;
}

std::uint64_t GetSortNumber(const KnownProject& project, ColumnID column) {
    if (column == kSizeColumnID) return project.mSize ? *project.mSize + 1 : 0;
    const std::optional<std::time_t>& time =
        column == kModifiedDateColumnID ? project.mModified : project.mCreated;
    // Times before the epoch are negative.
    constexpr std::uint64_t kEpoch = std::uint64_t{1} << 63;
    return time ? kEpoch + static_cast<std::uint64_t>(*time) : 0;
}

bool SortStringIsLess(const UTF16String& a, const UTF16String& b) {
    const CodeProfilerScope profile("HandlerSharedProjects::Columns::SortStringIsLess()");
    if (IsSortedLast(a)) return false;
    if (IsSortedLast(b)) return true;
    return CompareStringsIncludingNumericValues(a, b) < 0;
}

}  // namespace HandlerSharedProjects::Columns
