// Names that users give: whether they can be given, and what stands under them then.
#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "host/core/Localizer.h"
#include "host/dialogs/MessageBox.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionTrash.h"
#include "host/project/ProjectFiles.h"

namespace HandlerSharedProjects::Utils {

UTF16String DescribeWhyNotRenamed(const UTF16String& path) {
    if (IsTheZuProductionTrashDirectory(path))
        return ZString(
            "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/TheTrash=The trash keeps its name and its place.");
    return DescribeWhyHeld(path);
}

UTF16String TrimBlanks(const UTF16String& name) {
    constexpr const char16_t* kBlanks = u" \t\u00A0\u3000";
    const std::size_t begin = name.find_first_not_of(kBlanks);
    if (begin == UTF16String::npos) return {};
    return name.substr(begin, name.find_last_not_of(kBlanks) + 1 - begin);
}

UTF16String AddProjectExtension(const UTF16String& name) {
    return IsVantorProjectFile(name) ? name : name + GetProjectFileExtension();
}

void TellInvalidName(const char* titleKey, const char* textKey, const UTF16String& name,
                     const UTF16String& folder) {
    const UTF16String title = ZString(titleKey);
    UTF16String text = ZString(textKey) + PathUtils::GetIllegalPathCharactersDisplay(folder);
    const UTF16String reason = name.empty() ? name : PathUtils::DescribeInvalidFileName(name, folder);
    if (!reason.empty()) text += u"\n\n" + reason;
    MessageBox(title, text);
}

void TellHiddenName(const char* titleKey, const char* textKey, const UTF16String& name) {
    if (!name.starts_with(u'.')) return;
    const UTF16String title = ZString(titleKey);
    const UTF16String text = ZString(textKey, {name});
    MessageBox(title, text, kMessageBoxOK, kMessageBoxIconInformation, 0);
}

}  // namespace HandlerSharedProjects::Utils
