#include "desk/project/ProjectFile.h"

#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include "desk/files/PosixErrors.h"

namespace desk {

namespace {

constexpr int kReadings = 3;
constexpr std::chrono::milliseconds kBetweenReadings(100);

bool IsAbsence(int error) {
    return error == ENOENT || error == ENOTDIR;
}

ItemStatus ReadStatusOfFile(FileSystem& fileSystem, const std::string& path) {
    const ItemStatus status = fileSystem.Status(path, false);
    if (status.mKind != ItemKind::File) ThrowFileException("read", path, EINVAL);
    return status;
}

ProjectContent Judge(std::string bytes, const ItemStatus& status) {
    ProjectContent content;
    content.mStatus = status;
    content.mObstacle = EditedText::FindObstacle(bytes);
    if (content.mObstacle == EditedText::Obstacle::NoText) return content;
    content.mKind = ProjectContent::Kind::Text;
    if (content.mObstacle != EditedText::Obstacle::None) return content;
    content.mKind = ProjectContent::Kind::EditableText;
    content.mBytes = std::move(bytes);
    return content;
}

/// Absent when the file has more than `limit` bytes.
std::optional<std::string> ReadBytes(FileSystem& fileSystem, const std::string& path, std::size_t limit) {
    try {
        return fileSystem.ReadSmallFile(path, limit);
    } catch (const host::FileException& exception) {
        if (exception.SystemError() != EFBIG) throw;
    }
    return {};
}

bool IsAgreed(const FileComparison& found, const std::optional<FileComparison>& approved) {
    if (found.mOutcome == FileComparison::Outcome::Same) return true;
    if (!approved || approved->mOutcome != found.mOutcome) return false;
    return found.mOutcome == FileComparison::Outcome::Missing || IsSameState(found.mStatus, approved->mStatus);
}

/// A volume may fail a call that it has carried out.
bool DoBytesStand(FileSystem& fileSystem, const std::string& path, const std::string& bytes) {
    try {
        return fileSystem.ReadSmallFile(path, bytes.size()) == bytes;
    } catch (const host::FileException&) {
        return false;
    }
}

}  // namespace

ProjectFilePlace FindProjectFile(FileSystem& fileSystem, const std::string& path) {
    const bool isLink = fileSystem.Status(path, false).mKind == ItemKind::Link;
    const std::string realPath = fileSystem.ResolveLinks(path);
    const ProjectFilePlace place{isLink ? realPath : path, isLink, realPath};
    ReadStatusOfFile(fileSystem, place.mPath);
    return place;
}

ProjectContent ReadProjectFile(FileSystem& fileSystem, const std::string& path) {
    for (int reading = 1;; ++reading) {
        const ItemStatus before = ReadStatusOfFile(fileSystem, path);
        std::optional<std::string> bytes;
        if (before.mSize <= kEditableLimit) bytes = ReadBytes(fileSystem, path, kEditableLimit);
        if (!bytes) return {ProjectContent::Kind::Large, EditedText::Obstacle::None, {}, before};
        const ItemStatus after = ReadStatusOfFile(fileSystem, path);
        // What keeps changing is shown as it was read, and is out of date at the next look.
        if ((IsSameState(before, after) && bytes->size() == after.mSize) || reading == kReadings)
            return Judge(*std::move(bytes), before);
        std::this_thread::sleep_for(kBetweenReadings);
    }
}

FileComparison CompareProjectFile(FileSystem& fileSystem, const std::string& path,
                                  const ProjectContent& expected, bool alwaysReads) {
    using Outcome = FileComparison::Outcome;
    ItemStatus status;
    try {
        status = fileSystem.Status(path, false);
    } catch (const host::FileException& exception) {
        if (!IsAbsence(exception.SystemError())) throw;
        return {Outcome::Missing, {}};
    }
    const bool isEditable = expected.mKind == ProjectContent::Kind::EditableText;
    const bool isSameState = IsSameState(status, expected.mStatus);
    if (isSameState && !(alwaysReads && isEditable)) return {Outcome::Same, status};
    if (!isEditable || status.mKind != ItemKind::File || status.mSize != expected.mBytes.size())
        return {Outcome::Changed, status};
    // What was saved may have grown beyond what would be opened.
    const bool isSame = ReadBytes(fileSystem, path, expected.mBytes.size()) == expected.mBytes;
    return {isSame ? Outcome::Same : Outcome::Changed, status};
}

FileWriting WriteProjectFile(FileSystem& fileSystem, const std::string& path, const std::string& bytes,
                             const ProjectContent& expected, const std::optional<FileComparison>& approved) {
    FileWriting writing;
    try {
        writing.mFound = CompareProjectFile(fileSystem, path, expected, true);
        writing.mOutcome = FileWriting::Outcome::Differs;
        // A save that failed may have come through after all.
        if (!IsAgreed(writing.mFound, approved) && !DoBytesStand(fileSystem, path, bytes)) return writing;
        writing.mOutcome = FileWriting::Outcome::Failed;
        fileSystem.ReplaceFile(path, bytes);
        writing.mStands = true;
        writing.mStatus = fileSystem.Status(path, false);
        writing.mOutcome = FileWriting::Outcome::Written;
    } catch (const host::FileException& exception) {
        writing.mError = exception;
        writing.mOutcome = FileWriting::Outcome::Failed;
        if (!writing.mStands) writing.mStands = DoBytesStand(fileSystem, path, bytes);
    }
    return writing;
}

}  // namespace desk
