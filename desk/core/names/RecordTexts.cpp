#include "desk/core/names/RecordTexts.h"

#include <QByteArray>
#include <QDateTime>

#include "desk/core/names/FolderPath.h"

namespace desk {

QString ToPercentEncoded(const std::string& bytes) {
    return QString::fromLatin1(QByteArray::fromStdString(bytes).toPercentEncoding("/"));
}

QString ToTimeText(std::int64_t secondsSinceEpoch) {
    return QDateTime::fromSecsSinceEpoch(secondsSinceEpoch, Qt::UTC).toString(Qt::ISODate);
}

std::string MakeRelative(const std::string& path, const std::string& folder) {
    if (path == folder || !IsSameOrBelow(path, folder)) return path;
    return path.substr(folder.ends_with('/') ? folder.size() : folder.size() + 1);
}

}  // namespace desk
