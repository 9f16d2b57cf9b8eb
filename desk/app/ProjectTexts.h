#pragma once

#include <QString>

#include "desk/project/document/ProjectDocument.h"

namespace desk {

/// The words in which an open project is shown. All are ready to be shown. UI thread.

/// The project's name without the extension.
QString ProjectName(const host::UTF16String& path);
QString ProjectName(const ProjectDocument& document);
/// The tab's title: the name, a mark for unsaved changes, and what else is to be known, in words:
/// "Reel 1 •", "Reel 2 (read-only, out of date)".
QString ProjectTitle(const ProjectDocument& document);
/// The same for those who hear it.
QString SpokenProjectTitle(const ProjectDocument& document);
/// The path, and that there are unsaved changes.
QString ProjectToolTip(const ProjectDocument& document);
/// What a project is of which the editor shows no text: its kind and why it cannot be edited here.
QString DescribeContent(const ProjectContent& content);
/// Size and date of the file.
QString DescribeFile(const ProjectContent& content);

/// What is to be known of unsaved changes that were recovered.
QString DescribeRecovery(const ProjectDocument& document);

/// True for a lock that this process held, and that is another's now or gone. Touches no disk.
bool HasLostLock(const ProjectDocument& document);

}  // namespace desk
