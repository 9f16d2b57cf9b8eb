#include "desk/toolkit/ReceivedData.h"

#include <QMimeData>
#include <unordered_set>

#include "desk/core/edges/FileURI.h"
#include "desk/toolkit/CustomDataTypes.h"
#include "desk/toolkit/DragSource.h"
#include "host/files/PathUtils.h"

namespace desk {

namespace {

std::string_view WithoutLineEnd(std::string_view line) {
    while (!line.empty() && (line.back() == '\r' || line.back() == '\n' || line.back() == ' '))
        line.remove_suffix(1);
    return line;
}

}  // namespace

void ReadURIList(std::string_view text, host::OS_ReceiveData::Impl& received) {
    std::unordered_set<host::UTF16String> seen;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = WithoutLineEnd(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.empty() || line.front() == '#') continue;
        const std::string bytes = ReadFileURI(line);
        if (bytes.empty()) {
            ++received.mForeign;
            continue;
        }
        host::UTF16String path = host::PathUtils::ToNormalizedPath(host::UTF8to16(bytes));
        if (seen.insert(path).second) received.mPaths.push_back(std::move(path));
    }
}

std::shared_ptr<const host::OS_ReceiveData> Receive(const QMimeData& data, bool isFromThisProcess) {
    auto received = std::make_unique<host::OS_ReceiveData::Impl>();
    received->mIsOwn = isFromThisProcess;
    for (const auto& [type, systemType] : GetCustomDataTypes())
        if (const QString format = MimeTypeOf(type); data.hasFormat(format))
            received->mBytes[type] = data.data(format).toStdString();
    received->mHasFiles = data.hasFormat(QStringLiteral("text/uri-list"));
    if (received->mHasFiles) ReadURIList(data.data(QStringLiteral("text/uri-list")).toStdString(), *received);
    return std::make_shared<const host::OS_ReceiveData>(std::move(received));
}

}  // namespace desk

namespace host {

OS_ReceiveData::OS_ReceiveData(std::unique_ptr<Impl> impl) : mImpl(std::move(impl)) {}
OS_ReceiveData::~OS_ReceiveData() = default;

bool OS_ReceiveData::HasType(std::string_view type) const {
    if (type == kFilesType) return mImpl->mHasFiles && mImpl->mBytes.empty();
    return mImpl->mBytes.contains(type);
}

std::string OS_ReceiveData::GetBytes(std::string_view type) const {
    const auto found = mImpl->mBytes.find(type);
    return found == mImpl->mBytes.end() ? std::string() : found->second;
}

const UTF16StringVec& OS_ReceiveData::GetFilePaths() const {
    return mImpl->mPaths;
}

std::size_t OS_ReceiveData::CountOfForeignFiles() const {
    return mImpl->mForeign;
}

bool OS_ReceiveData::IsFromThisProcess() const {
    return mImpl->mIsOwn;
}

}  // namespace host
