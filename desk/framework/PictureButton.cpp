#include <QDragEnterEvent>
#include <QPointer>
#include <QStyleOptionToolButton>
#include <QStylePainter>
#include <QToolButton>

#include "desk/core/names/QtStrings.h"
#include "desk/framework/CommandRouter.h"
#include "desk/framework/ControlViewImpl.h"
#include "desk/framework/TabViewImpl.h"
#include "desk/toolkit/Callback.h"
#include "desk/toolkit/DragSource.h"
#include "desk/toolkit/DropRest.h"
#include "desk/toolkit/PictureImpl.h"
#include "desk/toolkit/ReceivedData.h"
#include "host/toolkit/Bitmap.h"

namespace desk {
namespace {

/// The side of a button's picture at scale 1, in view units.
constexpr double kPictureSide = 16;

using DragSupport = host::SharedFunction<bool(int, host::UI_DropData*)>;

class PictureToolButton : public QToolButton {
public:
    PictureToolButton(const host::Bitmap& bitmap, QWidget* parent) : QToolButton(parent), mBitmap(bitmap) {
        setAutoRaise(true);
    }

    void SetScale(double scale) {
        mScale = scale;
        update();
    }

    void SetDragSupport(DragSupport function) {
        setAcceptDrops(IsSet(function));
        mDragSupport = std::move(function);
        // What is dragged over a disabled button is its parent's.
        parentWidget()->setAcceptDrops(acceptDrops());
        parentWidget()->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

    void paintEvent(QPaintEvent*) override {
        QStylePainter painter(this);
        QStyleOptionToolButton option;
        initStyleOption(&option);
        if (mIsWelcome) option.state |= QStyle::State_Sunken;
        painter.drawComplexControl(QStyle::CC_ToolButton, option);
        if (!mBitmap.IsValid()) return;
        const double side = kPictureSide * mScale;
        const QRectF place((width() - side) / 2, (height() - side) / 2, side, side);
        PaintThemePicture(painter, mBitmap.GetPicture()->mName, place, isEnabled());
    }

private:
    bool Ask(int action, QPoint point);
    void Forget();

    host::Bitmap mBitmap;
    double mScale = 1;
    DragSupport mDragSupport;
    std::shared_ptr<const host::OS_ReceiveData> mData;
    DropRest mRest;
    bool mIsWelcome = false;
};

bool PictureToolButton::Ask(int action, QPoint point) {
    host::UI_DropData drop{mData.get(), {}, {point.x(), point.y()}};
    return Call(mDragSupport, action, &drop);
}

void PictureToolButton::Forget() {
    mData.reset();
    mIsWelcome = false;
    update();
}

void PictureToolButton::dragEnterEvent(QDragEnterEvent* event) {
    mData = Receive(*event->mimeData(), event->source() != nullptr);
    mRest.Restart();
    mIsWelcome = Ask(host::kDropAction_Entered, event->position().toPoint());
    event->setAccepted(mIsWelcome);
    update();
}

/// A disabled one has nothing selected; what is dragged may come from elsewhere.
bool PictureToolButton::eventFilter(QObject*, QEvent* event) {
    if (isEnabled()) return false;
    if (event->type() == QEvent::DragEnter) {
        auto* enter = static_cast<QDragEnterEvent*>(event);
        if (!geometry().contains(enter->position().toPoint())) return false;
        dragEnterEvent(enter);
        return true;
    }
    if (!mData) return false;
    if (event->type() == QEvent::DragLeave) dragLeaveEvent(nullptr);
    if (event->type() == QEvent::Drop) dropEvent(static_cast<QDropEvent*>(event));
    return event->type() == QEvent::DragLeave || event->type() == QEvent::Drop;
}

void PictureToolButton::dragLeaveEvent(QDragLeaveEvent*) {
    if (mData) Ask(host::kDropAction_Left, {});
    Forget();
}

void PictureToolButton::dropEvent(QDropEvent* event) {
    const bool isTaken = mIsWelcome && mRest.HasRested();
    event->setAccepted(isTaken);
    if (!isTaken) {
        DropRest::TellTooQuick();
        return dragLeaveEvent(nullptr);
    }
    NoteDropInThisProcess();
    const QPointer<PictureToolButton> button(this);
    RunAfterDrag([button, data = mData, point = event->position().toPoint()] {
        if (!button) return;
        button->mData = data;
        button->Ask(host::kDropAction_Dropped, point);
        if (button) button->Forget();
    });
    Forget();
}

struct PictureButtonImpl : host::ControlView::Impl {
    PictureToolButton* Button() const { return static_cast<PictureToolButton*>(mWidget.data()); }

    void Click(int commandID) {
        if (!mParent) return;
        if (host::TabView* panel = mParent->FindTabView()) TabViewImpl::Of(*panel).Pressed();
        CommandRouter::Instance().SendFrom(mParent->mView, commandID);
    }
};

}  // namespace
}  // namespace desk

namespace host {

PictureButton::PictureButton() : ControlView(std::make_unique<desk::PictureButtonImpl>()) {}

PictureButton::~PictureButton() = default;

void PictureButton::Create(View& parent, int commandID, const Rect& bounds, const Bitmap& bitmap) {
    if (IsCreated() || !parent.IsCreated()) return;
    auto& impl = static_cast<desk::PictureButtonImpl&>(GetImpl());
    auto* button = new desk::PictureToolButton(bitmap, parent.GetImpl().mWidget);
    button->setObjectName(QStringLiteral("command-%1").arg(commandID));
    QObject::connect(button, &QToolButton::clicked, button, [&impl, commandID] { impl.Click(commandID); });
    impl.Place(*button, parent, bounds);
}

void PictureButton::SetScale(float scale) {
    if (auto* button = static_cast<desk::PictureButtonImpl&>(GetImpl()).Button())
        button->SetScale(double(scale));
}

void PictureButton::SetDragSupportFxn(SharedFunction<bool(int action, UI_DropData* data)> function) {
    if (auto* button = static_cast<desk::PictureButtonImpl&>(GetImpl()).Button())
        button->SetDragSupport(std::move(function));
}

void PictureButton::SetStatusBarText(const UTF16String& text) {
    QWidget* const button = GetImpl().mWidget;
    if (!button) return;
    button->setStatusTip(desk::ToQString(text));
    button->setAccessibleDescription(desk::ToQString(text));
}

}  // namespace host
