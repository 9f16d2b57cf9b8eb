#pragma once

#include <QWidget>

#include "host/core/Export.h"
#include "host/framework/View.h"

namespace desk {

/// The widget of a view: hands painting, size and focus to it. Its type is exported, since the
/// undefined-behaviour sanitizer asks for it wherever a pointer is made. UI thread.
class ZUHOST_API ViewWidget : public QWidget {
public:
    ViewWidget(host::View::Impl& view, QWidget* parent);
    ~ViewWidget() override;

    /// The view lets go of the widget: it is hidden, and destroyed once the current event is through.
    void Dismiss();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void FocusChanged(QWidget* old, QWidget* now);
    bool Holds(const QWidget* widget) const;

    host::View::Impl* mView;
};

}  // namespace desk
