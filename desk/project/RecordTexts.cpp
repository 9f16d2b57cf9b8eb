#include "desk/project/RecordTexts.h"

#include <QByteArray>
#include <QDateTime>

#include "desk/files/FolderPath.h"

namespace desk {

QString ToPercentEncoded(const std::string& bytes) {
    return QString::fromLatin1(QByteArray::fromStdString(bytes).toPercentEncoding("/"));
}

std::string FromPercentEncoded(const QString& text) {
    return QByteArray::fromPercentEncoding(text.toUtf8()).toStdString();
}

QString ToTimeText(std::int64_t secondsSinceEpoch) {
    return QDateTime::fromSecsSinceEpoch(secondsSinceEpoch, Qt::UTC).toString(Qt::ISODate);
}

std::optional<std::int64_t> FromTimeText(const QString& text) {
    const QDateTime time = QDateTime::fromString(text, Qt::ISODate);
    if (!time.isValid() || time.timeSpec() != Qt::UTC) return {};
    return time.toSecsSinceEpoch();
}

std::string MakeRelative(const std::string& path, const std::string& folder) {
    if (path == folder || !IsSameOrBelow(path, folder)) return path;
    return path.substr(folder.ends_with('/') ? folder.size() : folder.size() + 1);
}

}  // namespace desk
