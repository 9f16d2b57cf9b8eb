#pragma once

#include <QPointer>
#include <QWidget>

#include "desk/framework/ViewImpl.h"
#include "host/framework/ControlView.h"

/// The desktop's half of a control: its widget, from `Create` to `Destroy`. UI thread.
struct host::ControlView::Impl {
    Impl() = default;
    virtual ~Impl();
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    /// Puts a new widget (owned by the view's) into `parent`, which must be created.
    void Place(QWidget& widget, View& parent, const Rect& bounds);
    void Destroy();
    virtual void SetToolTip(const QString& text);

    ControlView* mControl = nullptr;
    View::Impl* mParent = nullptr;
    QPointer<QWidget> mWidget;
    Rect mBounds;
};
