#include "desk/framework/DockWorkspaceTitleBar.h"

#include <QAbstractButton>
#include <QContextMenuEvent>
#include <QMenu>
#include <QPainter>
#include <QTimer>
#include <algorithm>

#include "desk/core/language/Localized.h"
#include "desk/framework/DockWorkspaceFrame.h"
#include "desk/toolkit/Theme.h"

namespace desk {
namespace {

constexpr int kHeight = 30;
constexpr int kTabbedHeight = 22;
constexpr int kMargin = 16;
constexpr int kAccentHeight = 2;
constexpr int kButtonWidth = 26;
constexpr int kButtonHeight = 22;

/// A small picture of a few lines, drawn in the theme's colours.
class BarButton : public QAbstractButton {
public:
    BarButton(QWidget* parent, QVector<QLineF> lines, const char* nameKey)
        : QAbstractButton(parent), mLines(lines) {
        const QString name = Localized(nameKey);
        setAccessibleName(name);
        setToolTip(name);
        setFocusPolicy(Qt::TabFocus);
        resize(kButtonWidth, kButtonHeight);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const bool isPointedAt = underMouse() || hasFocus() || isDown();
        painter.setPen(QPen(Theme::Color(isPointedAt ? ThemeColor::Text : ThemeColor::SecondaryText), 1.2));
        painter.translate(QRectF(rect()).center());
        painter.drawLines(mLines);
        painter.setPen(Theme::Color(ThemeColor::Accent));
        if (hasFocus())
            painter.drawRoundedRect(QRectF(rect()).translated(-rect().center()).adjusted(1, 1, -1, -1), 3, 3);
    }
    void enterEvent(QEnterEvent*) override { update(); }
    void leaveEvent(QEvent*) override { update(); }

private:
    QVector<QLineF> mLines;
};

}  // namespace

DockWorkspaceTitleBar::DockWorkspaceTitleBar(DockWorkspaceFrame& frame)
    : QWidget(&frame),
      mFrame(frame),
      mMenuButton(new BarButton(this, {{-4.5, -4, 4.5, -4}, {-4.5, 0, 4.5, 0}, {-4.5, 4, 4.5, 4}},
                                "$$$/Desk/Workspace/PanelMenu=Panel Menu")),
      mCloseButton(new BarButton(this, {{-3.5, -3.5, 3.5, 3.5}, {-3.5, 3.5, 3.5, -3.5}},
                                 "$$$/Desk/Workspace/ClosePanel=Close Panel")) {
    connect(mMenuButton, &QAbstractButton::clicked, this,
            [this] { ShowMenu(mMenuButton->mapToGlobal(QPoint(0, mMenuButton->height()))); });
    connect(mCloseButton, &QAbstractButton::clicked, this, [this] { mFrame.RequestClose(); });
}

void DockWorkspaceTitleBar::SetTitle(const QString& title) {
    mTitle = title;
    setAccessibleName(title);
    PlaceButtons();
    update();
}

void DockWorkspaceTitleBar::SetOnDuty(bool isOnDuty) {
    if (mIsOnDuty == isOnDuty) return;
    mIsOnDuty = isOnDuty;
    update();
}

void DockWorkspaceTitleBar::SetTabbed(bool isTabbed) {
    if (mIsTabbed == isTabbed) return;
    mIsTabbed = isTabbed;
    updateGeometry();
    PlaceButtons();
    update();
}

void DockWorkspaceTitleBar::Flash() {
    mIsFlashing = true;
    update();
    QTimer::singleShot(400, this, [this] {
        mIsFlashing = false;
        update();
    });
}

QSize DockWorkspaceTitleBar::sizeHint() const {
    return {TabWidth() + 2 * kButtonWidth, mIsTabbed ? kTabbedHeight : kHeight};
}

QSize DockWorkspaceTitleBar::minimumSizeHint() const {
    return {2 * kMargin + 2 * kButtonWidth, sizeHint().height()};
}

int DockWorkspaceTitleBar::TabWidth() const {
    // One more than the advance, which is rounded: the whole title must not count as too wide.
    return fontMetrics().horizontalAdvance(mTitle) + 1 + 2 * kMargin;
}

void DockWorkspaceTitleBar::PlaceButtons() {
    const int top = (height() - kButtonHeight) / 2;
    const int closeLeft = width() - kButtonWidth - 4;
    mCloseButton->move(closeLeft, top);
    const int menuLeft = mIsTabbed ? closeLeft : TabWidth() + 8;
    mMenuButton->move(std::max(0, std::min(menuLeft, closeLeft - kButtonWidth)), top);
}

void DockWorkspaceTitleBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(),
                     Theme::Color(mIsTabbed ? ThemeColor::WindowBackground : ThemeColor::PanelBackground));
    if (!mIsTabbed) PaintTab(painter);
}

void DockWorkspaceTitleBar::PaintTab(QPainter& painter) const {
    const QRect tab(0, 0, std::min(TabWidth(), mMenuButton->x()), height());
    painter.fillRect(tab, Theme::Color(mIsFlashing ? ThemeColor::Selection : ThemeColor::WindowBackground));
    QColor accent = Theme::Color(ThemeColor::Accent);
    if (!mIsOnDuty) accent.setAlphaF(0.45F);
    painter.fillRect(QRect(0, 0, tab.width(), kAccentHeight), accent);
    painter.setPen(Theme::Color(mIsOnDuty ? ThemeColor::Text : ThemeColor::SecondaryText));
    const QRect text = tab.adjusted(kMargin, kAccentHeight, -kMargin, 0);
    painter.drawText(text, Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(mTitle, Qt::ElideMiddle, text.width()));
}

void DockWorkspaceTitleBar::resizeEvent(QResizeEvent*) {
    PlaceButtons();
}

void DockWorkspaceTitleBar::mousePressEvent(QMouseEvent* event) {
    mFrame.TakeFocus();
    QWidget::mousePressEvent(event);  // Ignores it: the dock begins a drag.
}

void DockWorkspaceTitleBar::contextMenuEvent(QContextMenuEvent* event) {
    ShowMenu(event->globalPos());
}

bool DockWorkspaceTitleBar::event(QEvent* event) {
    if (event->type() == QEvent::FontChange) PlaceButtons();
    return QWidget::event(event);
}

void DockWorkspaceTitleBar::ShowMenu(QPoint screenPosition) {
    mFrame.TakeFocus();
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    mFrame.FillMenu(*menu);
    menu->popup(screenPosition);
}

}  // namespace desk
