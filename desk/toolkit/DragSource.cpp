#include "desk/toolkit/DragSource.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QDrag>
#include <QGuiApplication>
#include <QMimeData>
#include <QPainter>
#include <algorithm>
#include <utility>
#include <vector>

#include "desk/core/edges/FileURI.h"
#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/ShapedText.h"
#include "desk/toolkit/Theme.h"
#include "host/core/Localizer.h"

namespace desk {

namespace {

constexpr int kPictureHeight = 26;
constexpr int kPictureMargin = 9;
constexpr int kWidestName = 260;

/// The drag that goes on; there is one at a time.
struct RunningDrag {
    bool mIsRunning = false;
    bool mWasDroppedHere = false;
    std::vector<std::function<void()>> mTasks;
};

RunningDrag& Running() {
    static RunningDrag sRunning;
    return sRunning;
}

}  // namespace

QString MimeTypeOf(std::string_view type) {
    QString name = ToQStringFromUTF8(type).toLower();
    for (QChar& unit : name)
        if (!unit.isLetterOrNumber()) unit = QLatin1Char('-');
    return QStringLiteral("application/x-zuhost-") + name;
}

void RunAfterDrag(std::function<void()> task) {
    if (Running().mIsRunning)
        Running().mTasks.push_back(std::move(task));
    else
        GetServices().mMainThread->Post(std::move(task));
}

void NoteDropInThisProcess() {
    Running().mWasDroppedHere = true;
}

QPixmap DrawDragPicture(const QString& name, std::size_t count, qreal devicePixelRatio) {
    const QFontMetrics metrics(GetTextFont(0, false).mFont);
    const QString shown = metrics.elidedText(name, Qt::ElideMiddle, kWidestName);
    const QString number = count > 1 ? QString::number(count) : QString();
    const int nameWidth = metrics.horizontalAdvance(shown) + 2 * kPictureMargin;
    const int badge =
        number.isEmpty() ? 0 : std::max(kPictureHeight, metrics.horizontalAdvance(number) + 2 * kPictureMargin);
    QPixmap picture(QSize(nameWidth + badge, kPictureHeight) * devicePixelRatio);
    picture.setDevicePixelRatio(devicePixelRatio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(GetTextFont(0, false).mFont);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::Color(ThemeColor::Selection));
    painter.drawRoundedRect(QRect(0, 0, nameWidth, kPictureHeight), 4, 4);
    painter.setPen(Theme::Color(ThemeColor::SelectionText));
    painter.drawText(QRect(0, 0, nameWidth, kPictureHeight), Qt::AlignCenter, shown);
    if (number.isEmpty()) return picture;
    const QRect round(nameWidth, 0, badge, kPictureHeight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::Color(ThemeColor::Accent));
    painter.drawRoundedRect(round, kPictureHeight / 2.0, kPictureHeight / 2.0);
    painter.setPen(Theme::Color(ThemeColor::WindowBackground));
    painter.drawText(round, Qt::AlignCenter, number);
    return picture;
}

namespace {

void TellCut(const QString& name, std::size_t count) {
    TellUser(count == 1
                 ? host::ZString("$$$/Desk/Tree/CutOne=“@0” was cut. Pasting it moves it into the folder that "
                                 "is selected then.",
                                 {ToUTF16(name)})
                 : host::ZString("$$$/Desk/Tree/CutSeveral=@0 items were cut. Pasting them moves them into the "
                                 "folder that is selected then.",
                                 {host::NumberToString(static_cast<long long>(count))}));
}

}  // namespace

}  // namespace desk

struct host::OS_SendData::Impl {
    QPointer<QWidget> mSource;
    bool mIsCut = false;
    std::unique_ptr<QMimeData> mData = std::make_unique<QMimeData>();
    QByteArray mFiles;
    QString mName;
    std::size_t mCount = 0;
};

namespace host {

OS_SendData::OS_SendData(const OS_Event& event) : mImpl(std::make_unique<Impl>()) {
    mImpl->mSource = event.GetImpl().mWidget;
    mImpl->mIsCut = event.GetImpl().mIsCut;
}

OS_SendData::~OS_SendData() = default;

void OS_SendData::PutAsBytes(std::string_view type, const void* bytes, std::size_t count) {
    if (!mImpl->mData) return;
    mImpl->mData->setData(desk::MimeTypeOf(type),
                          QByteArray(static_cast<const char*>(bytes), static_cast<qsizetype>(count)));
}

void OS_SendData::PutFiles(const UTF16StringVec& paths) {
    for (const UTF16String& path : paths)
        mImpl->mFiles += QByteArray::fromStdString(desk::MakeFileURI(UTF16to8(path)) + "\r\n");
}

void OS_SendData::SetPicture(const UTF16String& name, std::size_t count) {
    mImpl->mName = desk::ToDisplayText(name);
    mImpl->mCount = count;
}

bool OS_SendData::DoDragAndDrop(unsigned actions, unsigned& result) {
    result = kDragAction_None;
    desk::RunningDrag& running = desk::Running();
    if (!mImpl->mSource || !mImpl->mData || running.mIsRunning) return false;
    if ((actions & kDragAction_Copy) && !mImpl->mFiles.isEmpty())
        mImpl->mData->setData(QStringLiteral("text/uri-list"), mImpl->mFiles);
    if (mImpl->mIsCut) {
        QGuiApplication::clipboard()->setMimeData(mImpl->mData.release());
        desk::TellCut(mImpl->mName, mImpl->mCount);
        return true;
    }
    // Qt deletes it. The widget may go during the drag, and would take it along.
    auto* drag = new QDrag(QCoreApplication::instance());
    drag->setMimeData(mImpl->mData.release());
    if (!mImpl->mName.isEmpty()) {
        drag->setPixmap(
            desk::DrawDragPicture(mImpl->mName, mImpl->mCount, mImpl->mSource->devicePixelRatioF()));
        drag->setHotSpot({-12, -8});
    }
    running.mIsRunning = true;
    running.mWasDroppedHere = false;
    const bool isTaken = drag->exec(Qt::CopyAction) != Qt::IgnoreAction;
    running.mIsRunning = false;
    for (auto& task : std::exchange(running.mTasks, {})) desk::RunAfterDrag(std::move(task));
    if (isTaken) result = running.mWasDroppedHere ? kDragAction_Move : kDragAction_Copy;
    return isTaken;
}

}  // namespace host
