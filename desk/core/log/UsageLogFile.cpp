#include "desk/core/log/UsageLogFile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <chrono>
#include <ctime>
#include <mutex>
#include <utility>
#include <vector>

#include "desk/core/durable/ReplaceFile.h"
#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/work/WorkerPool.h"
#include "host/core/Logging.h"
#include "host/core/UsageLogger.h"
#include "host/files/FileException.h"

namespace desk {
namespace {

constexpr std::uint64_t kFileLimit = std::uint64_t{4} << 20;
/// More lines than that wait only when the disk hangs; the newest are dropped then.
constexpr std::size_t kMostLines = 10000;

std::string Quoted(std::string_view text) {
    const QJsonArray array{QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))};
    const std::string json = QJsonDocument(array).toJson(QJsonDocument::Compact).toStdString();
    return json.substr(1, json.size() - 2);
}

std::string UTCNow() {
    const auto now = GetServices().mDesktop ? GetServices().mDesktop->Now() : std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc)};
}

using Values = std::vector<std::pair<std::string, std::string>>;

std::string MakeLine(std::string_view category, std::string_view event, std::string_view group,
                     const Values& values) {
    std::string line =
        "{\"time\":" + Quoted(UTCNow()) + ",\"category\":" + Quoted(category) + ",\"event\":" + Quoted(event);
    if (!group.empty()) line += ",\"group\":" + Quoted(group);
    line += ",\"values\":{";
    for (std::size_t i = 0; i < values.size(); ++i)
        line += (i ? "," : "") + Quoted(values[i].first) + ':' + Quoted(values[i].second);
    return line + "}}\n";
}

}  // namespace

/// Hands lines to the disk, one worker at a time, so that their order stays.
class UsageLogFile::Writer : public std::enable_shared_from_this<Writer> {
public:
    explicit Writer(std::string path) : mPath(std::move(path)) {}
    void Add(std::string line);

private:
    void WriteWaiting();
    void Write(const std::string& lines);
    void BeginNewFileWhenFull(std::size_t more);

    const std::string mPath;
    std::mutex mMutex;
    std::vector<std::string> mLines;
    bool mIsWriting = false;
    bool mHasFailed = false;
};

void UsageLogFile::Writer::Add(std::string line) {
    {
        const std::lock_guard lock(mMutex);
        if (mLines.size() >= kMostLines) return;
        mLines.push_back(std::move(line));
        if (std::exchange(mIsWriting, true)) return;
    }
    GetServices().mWorkerPool->SubmitLast([self = shared_from_this()] { self->WriteWaiting(); });
}

void UsageLogFile::Writer::WriteWaiting() {
    for (;;) {
        std::string lines;
        {
            const std::lock_guard lock(mMutex);
            mIsWriting = !mLines.empty();
            if (!mIsWriting) return;
            for (const std::string& line : mLines) lines += line;
            mLines.clear();
        }
        Write(lines);
    }
}

void UsageLogFile::Writer::Write(const std::string& lines) {
    try {
        BeginNewFileWhenFull(lines.size());
        GetServices().mFileSystem->AppendToFile(mPath, lines);
        mHasFailed = false;
    } catch (const std::exception& exception) {
        if (!std::exchange(mHasFailed, true))
            Log(LogLevel::Warning, std::string("Usage is not recorded: ") + exception.what());
    }
}

void UsageLogFile::Writer::BeginNewFileWhenFull(std::size_t more) {
    FileSystem& disk = *GetServices().mFileSystem;
    try {
        if (disk.Status(mPath, false).mSize + more <= kFileLimit) return;
    } catch (const host::FileException&) {
        return;  // There is none yet; anything else shows when it is written.
    }
    ReplaceFileOrThrow(disk, mPath + ".old", disk.ReadSmallFile(mPath, 2 * kFileLimit));
    ReplaceFileOrThrow(disk, mPath, {});
}

namespace {

UsageLogFile::Writer* sWriter = nullptr;

class Group : public host::UsageLogGroup {
public:
    Group(std::string_view category, std::string_view event, std::string_view group)
        : mCategory(category), mEvent(event), mGroup(group) {}

    void AddKeyValue(std::string_view key, std::string_view value) override {
        const auto found = std::ranges::find(mValues, key, &Values::value_type::first);
        if (found != mValues.end())
            found->second = value;
        else
            mValues.emplace_back(key, value);
    }
    void Send() override {
        if (sWriter) sWriter->Add(MakeLine(mCategory, mEvent, mGroup, mValues));
    }

private:
    std::string mCategory;
    std::string mEvent;
    std::string mGroup;
    Values mValues;
};

}  // namespace

UsageLogFile::UsageLogFile(const std::string& path) : mWriter(std::make_shared<Writer>(path)) {
    sWriter = mWriter.get();
}

UsageLogFile::~UsageLogFile() {
    sWriter = nullptr;
}

}  // namespace desk

namespace host {

UsageLogGroup::~UsageLogGroup() = default;

UsageLogger* UsageLogger::Get() {
    static UsageLogger logger;
    return desk::sWriter ? &logger : nullptr;
}

void UsageLogger::LogEvent(std::string_view category, std::string_view name, std::string_view value) {
    if (desk::sWriter) desk::sWriter->Add(desk::MakeLine(category, name, {}, {{"value", std::string(value)}}));
}

std::unique_ptr<UsageLogGroup> UsageLogger::CreateGroup(std::string_view category, std::string_view eventName,
                                                        std::string_view groupName) {
    return std::make_unique<desk::Group>(category, eventName, groupName);
}

}  // namespace host
