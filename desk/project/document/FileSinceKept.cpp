#include "desk/project/document/FileSinceKept.h"

#include <algorithm>
#include <cerrno>

#include "desk/core/durable/Presence.h"
#include "desk/core/names/FolderPath.h"
#include "desk/project/document/ProjectFile.h"

namespace desk {

namespace {

using State = FileSinceKept::State;

FileSinceKept Compare(FileSystem& fileSystem, const KeptText& text) {
    const std::string path = FindProjectFile(fileSystem, host::UTF16to8(text.mProject)).mPath;
    const ItemStatus status = fileSystem.Status(path, false);
    FileSinceKept found{State::Changed, status.mModified, 0};
    if (status.mSize != text.mBase.mSize && status.mSize != text.mText.mSize) return found;
    const ContentMark now = MarkContent(fileSystem.ReadSmallFile(path, kKeptTextLimit));
    if (now == text.mBase) found.mState = State::Unchanged;
    if (now == text.mText) found.mState = State::HoldsText;
    return found;
}

bool IsThere(FileSystem& fileSystem, const std::string& path) {
    try {
        fileSystem.Status(path, false);
        return true;
    } catch (const host::FileException& exception) {
        if (!IsAbsence(exception.SystemError())) throw;
        return false;
    }
}

/// Where nothing stands at the project's path.
FileSinceKept FindOutAboutAbsence(FileSystem& fileSystem, const KeptText& text) {
    const std::string path = host::UTF16to8(text.mProject);
    if (IsThere(fileSystem, path)) return {State::NotTold, 0, EAGAIN};
    return {IsThere(fileSystem, FolderOf(path)) ? State::Gone : State::FolderGone, 0, 0};
}

}  // namespace

FileSinceKept FindFileSinceKept(FileSystem& fileSystem, const KeptText& text) {
    try {
        return Compare(fileSystem, text);
    } catch (const host::FileException& exception) {
        const int error = exception.SystemError();
        if (error == EFBIG) return {State::Changed, 0, 0};
        if (!IsAbsence(error)) return {State::NotTold, 0, error};
    }
    try {
        return FindOutAboutAbsence(fileSystem, text);
    } catch (const host::FileException& exception) {
        return {State::NotTold, 0, exception.SystemError()};
    }
}

}  // namespace desk
