#pragma once

#include <QColor>
#include <QPointer>
#include <QWidget>
#include <string>

#include "desk/toolkit/NodeTimers.h"
#include "host/toolkit/UI_Node.h"

class QPainter;

namespace desk {

/// How a light node is to be painted.
struct LightPaint {
    QPainter& mPainter;
    QColor mTextColor;
};

}  // namespace desk

/// The desktop's half of a node. UI thread.
struct host::UI_Node::Impl {
    Impl() = default;
    virtual ~Impl();
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    static Impl& Of(const UI_Node& node) { return node.GetImpl(); }

    /// Gives the node its widget inside `parent`; its bounds and whether it is shown are applied to it.
    virtual void Realize(QWidget& parent);
    /// Takes the widget away; the node goes on as a light one.
    virtual void Unrealize();
    /// Paints the node with its top left corner at the painter's origin.
    virtual void Paint(const desk::LightPaint& paint);
    /// Width that the node's content would like to have, counted from the node's left edge.
    virtual double NaturalWidth() { return 0; }

    void SetBounds(const RectT<float>& bounds);
    virtual void SetShown(bool shown);
    /// Offers a key to the node and to what it stands in; true when one of them has dealt with it.
    bool OfferKey(const UI_KeyboardEvent& event);
    /// Tells the node that a timer of its own is due; false when it does not know the timer.
    bool NotifyTimer(UI_TimerID id);
    /// What the node shows has changed: has it painted anew, wherever that happens.
    virtual void ContentChanged();

    UI_Node* mNode = nullptr;
    UI_Container* mParent = nullptr;
    QPointer<QWidget> mWidget;
    std::string mID;
    RectT<float> mBounds;
    bool mHasBounds = false;
    bool mIsShown = true;
    /// Null for a node that never had any: most are such.
    std::unique_ptr<desk::NodeTimers> mTimers;

protected:
    /// Makes the node's own widget; null for nodes that have none.
    virtual QWidget* CreateWidget(QWidget& parent);
    virtual void ApplyToWidget();
    void SizeChanged() { mNode->UI_SizeChanged({0, 0, mBounds.width, mBounds.height}); }
};

namespace desk {

/// The desktop's half of a container.
struct ContainerImpl : host::UI_Node::Impl {
    static ContainerImpl& Of(const host::UI_Container& node) {
        return static_cast<ContainerImpl&>(node.GetImpl());
    }

    void AddChild(host::RefPtr<host::UI_Node> child);
    void RemoveChild(host::UI_Node* child);
    void RemoveAllChildren();

    void Realize(QWidget& parent) override;
    void Unrealize() override;
    void Paint(const LightPaint& paint) override;
    double NaturalWidth() override;

    std::vector<host::RefPtr<host::UI_Node>> mChildren;

protected:
    QWidget* CreateWidget(QWidget& parent) override;
    /// A child has been added.
    virtual void ChildAdded(host::UI_Node&) {}
};

/// Paints `node` and what is in it, at the place that its bounds name.
void PaintLightNode(host::UI_Node& node, const LightPaint& paint);

/// A widget that shows a node without a widget class of its own.
class NodeWidget : public QWidget {
public:
    NodeWidget(host::UI_Node::Impl& node, QWidget* parent) : QWidget(parent), mNode(&node) {}

protected:
    void paintEvent(QPaintEvent*) override;

private:
    host::UI_Node::Impl* mNode;
};

}  // namespace desk
