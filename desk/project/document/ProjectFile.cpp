#include "desk/project/document/ProjectFile.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include "desk/core/durable/PosixErrors.h"
#include "desk/core/durable/Presence.h"
#include "desk/core/durable/ReplaceFile.h"
#include "desk/core/names/FolderPath.h"

namespace desk {

namespace {

constexpr int kReadings = 3;
constexpr std::chrono::milliseconds kBetweenReadings(100);

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

bool MayHaveSize(const ProjectContent& content, std::uint64_t size) {
    const auto hasSize = [size](const std::string& bytes) { return bytes.size() == size; };
    return hasSize(content.mBytes) || std::ranges::any_of(content.mMayHold, hasSize);
}

bool MayBe(const ProjectContent& content, const std::string& bytes) {
    return content.mBytes == bytes || std::ranges::find(content.mMayHold, bytes) != content.mMayHold.end();
}

/// As a save compares. What this machine has in mind after a save that is in doubt may be old.
FileComparison CompareToWrite(FileSystem& fileSystem, const std::string& path, const ProjectContent& expected) {
    const FileComparison found = CompareProjectFile(fileSystem, path, expected, true);
    if (found.mOutcome == FileComparison::Outcome::Same || expected.mMayHold.empty()) return found;
    fileSystem.WaitForCaches(FolderOf(path));
    return CompareProjectFile(fileSystem, path, expected, true);
}

FileWriting::Outcome ToOutcome(FileReplacement::Outcome outcome) {
    switch (outcome) {
        case FileReplacement::Outcome::Done:
            return FileWriting::Outcome::Written;
        case FileReplacement::Outcome::NotDone:
            return FileWriting::Outcome::Failed;
        case FileReplacement::Outcome::NotKnown:
            break;
    }
    return FileWriting::Outcome::MayBeWritten;
}

ItemStatus ReadStatusAfterWriting(FileSystem& fileSystem, const std::string& path, const ItemStatus& before) {
    try {
        return fileSystem.Status(path, false);
    } catch (const host::FileException&) {
        ItemStatus unknown;  // It differs from any, so that the next look reads the file.
        unknown.mMode = before.mMode;
        return unknown;
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
    if (!isEditable || status.mKind != ItemKind::File || !MayHaveSize(expected, status.mSize))
        return {Outcome::Changed, status};
    // What was saved may have grown beyond what would be opened.
    const auto bytes = ReadBytes(fileSystem, path, status.mSize);
    return {bytes && MayBe(expected, *bytes) ? Outcome::Same : Outcome::Changed, status};
}

FileWriting WriteProjectFile(FileSystem& fileSystem, const std::string& path, const std::string& bytes,
                             const ProjectContent& expected, const std::optional<FileComparison>& approved) {
    FileWriting writing;
    try {
        writing.mFound = CompareToWrite(fileSystem, path, expected);
    } catch (const host::FileException& exception) {
        writing.mError = exception;
        return writing;
    }
    if (!IsAgreed(writing.mFound, approved) && !DoesHold(fileSystem, path, bytes)) {
        writing.mOutcome = FileWriting::Outcome::Differs;
        return writing;
    }
    FileReplacement replacement = ReplaceFile(fileSystem, path, bytes, expected.mStatus.mMode & 0777);
    writing.mOutcome = ToOutcome(replacement.mOutcome);
    writing.mError = std::move(replacement.mError);
    writing.mKept = std::move(replacement.mKept);
    if (writing.mOutcome == FileWriting::Outcome::Written)
        writing.mStatus = ReadStatusAfterWriting(fileSystem, path, expected.mStatus);
    return writing;
}

}  // namespace desk
