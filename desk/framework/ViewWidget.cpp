#include "desk/framework/ViewWidget.h"

#include <QApplication>
#include <QPainter>
#include <QResizeEvent>
#include <QStatusTipEvent>
#include <utility>

#include "desk/framework/ViewImpl.h"

namespace desk {

ViewWidget::ViewWidget(host::View::Impl& view, QWidget* parent) : QWidget(parent), mView(&view) {
    connect(qApp, &QApplication::focusChanged, this, &ViewWidget::FocusChanged);
}

ViewWidget::~ViewWidget() {
    if (host::View::Impl* view = std::exchange(mView, nullptr)) view->WidgetGone();
}

void ViewWidget::Dismiss() {
    mView = nullptr;
    disconnect(qApp, nullptr, this, nullptr);
    hide();
    deleteLater();
}

bool ViewWidget::event(QEvent* event) {
    // Qt hands status tips up to the window; the status bar is in the window that a floating one belongs to.
    if (event->type() == QEvent::StatusTip && window() && window()->parentWidget()) {
        QStatusTipEvent tip(static_cast<QStatusTipEvent*>(event)->tip());
        return QCoreApplication::sendEvent(window()->parentWidget(), &tip);
    }
    return QWidget::event(event);
}

void ViewWidget::paintEvent(QPaintEvent*) {
    if (!mView) return;
    QPainter painter(this);
    mView->Paint(painter);
}

void ViewWidget::resizeEvent(QResizeEvent* event) {
    if (mView) mView->WidgetResized(event->size());
}

void ViewWidget::mousePressEvent(QMouseEvent* event) {
    if (mView) mView->Pressed();
    QWidget::mousePressEvent(event);
}

void ViewWidget::FocusChanged(QWidget* old, QWidget* now) {
    if (mView && Holds(now) && !Holds(old)) mView->FocusEntered();
}

bool ViewWidget::Holds(const QWidget* widget) const {
    return widget && (widget == this || isAncestorOf(widget));
}

}  // namespace desk
