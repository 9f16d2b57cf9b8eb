#include "desk/project/FileSinceKept.h"

#include <algorithm>
#include <cerrno>

#include "desk/project/ProjectLocking.h"

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

/// Where nothing stands at the project's path.
FileSinceKept FindOutAboutAbsence(const KeptText& text) {
    switch (FindRemains(text.mProject)) {
        case ProjectRemains::Nothing:
            return {State::FolderGone, 0, 0};
        case ProjectRemains::Folder:
            return {State::Gone, 0, 0};
        case ProjectRemains::Project:
            break;
    }
    return {State::NotTold, 0, EAGAIN};
}

}  // namespace

FileSinceKept FindFileSinceKept(FileSystem& fileSystem, const KeptText& text) {
    try {
        return Compare(fileSystem, text);
    } catch (const host::FileException& exception) {
        const int error = exception.SystemError();
        if (error == EFBIG) return {State::Changed, 0, 0};
        if (error != ENOENT && error != ENOTDIR) return {State::NotTold, 0, error};
    }
    try {
        return FindOutAboutAbsence(text);
    } catch (const host::FileException& exception) {
        return {State::NotTold, 0, exception.SystemError()};
    }
}

}  // namespace desk
