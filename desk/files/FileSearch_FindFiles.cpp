#include "desk/core/WorkProgress.h"
#include "desk/dialogs/LongWork.h"
#include "desk/files/FolderWalk.h"
#include "host/core/Localizer.h"
#include "host/files/FileSearch.h"
#include "host/files/PathUtils.h"

namespace host {

UTF16StringVec FileSearch::FindFiles(const UTF16String& root, const UTF16String& extension) {
    UTF16StringVec found;
    desk::RunLongWork(
        ZString("$$$/Vantor/Desk/Files/Searching=Searching “@0”", {PathUtils::GetFullFilePart(root)}),
        [&](desk::WorkProgress& progress) {
            desk::FolderWalk walk({{extension}, nullptr, false, nullptr}, nullptr);
            found = walk.Run(root, progress).mPaths;
        });
    return found;
}

}  // namespace host
