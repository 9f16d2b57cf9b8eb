#pragma once

#include <QString>
#include <optional>

#include "desk/project/document/FileSinceKept.h"
#include "desk/project/document/KeptText.h"

namespace desk {

/// The words in which kept text is offered. All are ready to be shown. UI thread.

/// Where the project is.
QString DescribeFolder(const KeptText& text);
/// When the text was written, how long it is and, where another program may still be at it, whose it is.
QString DescribeText(const KeptTextFile& file);
/// What the disk holds now; absent: nobody knows yet.
QString DescribeFile(const std::optional<FileSinceKept>& found);

/// A time by the user's locale.
QString ShownTime(std::int64_t secondsSinceEpoch);

}  // namespace desk
