#pragma once

#include <QString>
#include <chrono>

#include "desk/project/production/CopyQueue.h"

namespace desk {

/// What the progress panel says of a job; ready to be shown. UI thread.

/// The name under which the copy is to stand.
QString DescribeName(const CopyJob& job);
/// The folder in which it is to stand: as the open production's tree shows it, else its path.
QString DescribeFolder(const CopyJob& job);
/// How it stands: "12.4 MB of 80 MB, about 5 s left".
QString DescribeState(const CopyJob& job);
/// "about 5 s left", in steps that do not flicker.
QString DescribeTimeLeft(std::chrono::seconds timeLeft);

}  // namespace desk
