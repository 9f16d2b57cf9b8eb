#include "desk/files/copy/ItemCopier.h"

#include <cerrno>

#include "desk/core/durable/PosixErrors.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/copy/ItemTree.h"
#include "desk/files/copy/PartFile.h"

namespace desk {

namespace {

void ThrowIfInside(const std::string& source, const std::string& destination) {
    if (IsSameOrBelow(destination, source)) ThrowFileException("copy into itself", source, EINVAL);
}

void LogLeftOut(const ItemTree& tree) {
    for (const TreeItem& item : tree.mOthers)
        Log(LogLevel::Info, "not copied, for it is neither file nor folder nor link: " + tree.PathOf(item));
}

}  // namespace

void CopyItem(const std::string& source, const std::string& destination, WorkProgress& progress) {
    PartFile part(destination);
    ItemTree tree = ReadItemTree(source, TreeExtent::Content, progress);
    if (tree.IsFolder()) ThrowIfInside(source, destination);
    if (!tree.mOthers.empty() && tree.mOthers.front().mBelow.empty())
        ThrowFileException("copy", source, EINVAL);
    LogLeftOut(tree);
    progress.AddToTotal(tree.mBytes);
    part.Copy(tree, progress);
    ThrowUnlessDurable(part.Publish(), source, destination);
}

}  // namespace desk
