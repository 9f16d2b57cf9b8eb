#include "desk/core/edges/FileURI.h"

#include <QByteArray>

namespace desk {

namespace {

constexpr std::string_view kScheme = "file://";
/// RFC 8089 names no other host that is this machine for certain.
constexpr std::string_view kThisMachine = "localhost";

}  // namespace

std::string MakeFileURI(const std::string& path) {
    return std::string(kScheme) + QByteArray::fromStdString(path).toPercentEncoding("/").toStdString();
}

std::string ReadFileURI(std::string_view uri) {
    if (!uri.starts_with(kScheme)) return {};
    uri.remove_prefix(kScheme.size());
    if (uri.starts_with(kThisMachine)) uri.remove_prefix(kThisMachine.size());
    const QByteArray path =
        QByteArray::fromPercentEncoding(QByteArray(uri.data(), static_cast<qsizetype>(uri.size())));
    return path.startsWith('/') && !path.contains('\0') ? path.toStdString() : std::string();
}

}  // namespace desk
