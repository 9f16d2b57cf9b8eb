#include "desk/toolkit/WidgetContainer.h"

#include <QEvent>

#include "desk/toolkit/NodeImpl.h"

namespace desk {

namespace {

/// The container of a widget that belongs to somebody else: its children's widgets stand in it.
struct WidgetContainerImpl final : ContainerImpl {
    explicit WidgetContainerImpl(QWidget& widget) : mHost(*this, widget) { mWidget = &widget; }
    ~WidgetContainerImpl() override { mWidget = nullptr; }

    /// The widget stays; it is not ours.
    void Unrealize() override {}
    void ApplyToWidget() override {}
    void SetShown(bool shown) override {
        mIsShown = shown;
        if (mWidget) mWidget->setVisible(shown);
    }

    /// Follows the widget's size, and takes the nodes' widgets out before it goes.
    class HostFollower : public QObject {
    public:
        HostFollower(WidgetContainerImpl& container, QWidget& widget)
            : mContainer(container), mWatched(&widget) {
            widget.installEventFilter(this);
            connect(&widget, &QObject::destroyed, this, [this] { mContainer.WidgetGone(); });
        }

    protected:
        bool eventFilter(QObject* watched, QEvent* event) override {
            if (event->type() == QEvent::Resize && watched == mWatched) mContainer.FollowSize();
            return false;
        }

    private:
        WidgetContainerImpl& mContainer;
        QObject* mWatched;
    };

    void FollowSize() {
        SetBounds({0, 0, static_cast<float>(mWidget->width()), static_cast<float>(mWidget->height())});
    }

    void WidgetGone() {
        for (const auto& child : mChildren) child->GetImpl().Unrealize();
        mWidget = nullptr;
    }

    HostFollower mHost;
};

/// A container that is made here only.
class WidgetContainer final : public host::UI_Container {
public:
    explicit WidgetContainer(std::unique_ptr<WidgetContainerImpl> impl) : UI_Container(std::move(impl)) {}
};

}  // namespace

host::RefPtr<host::UI_Container> CreateWidgetContainer(QWidget& widget) {
    host::RefPtr<host::UI_Container> container(
        new WidgetContainer(std::make_unique<WidgetContainerImpl>(widget)));
    static_cast<WidgetContainerImpl&>(container->GetImpl()).FollowSize();
    return container;
}

QWidget* GetNodeWidget(const host::UI_Node& node) {
    return node.GetImpl().mWidget;
}

}  // namespace desk
