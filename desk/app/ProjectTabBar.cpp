#include "desk/app/ProjectTabBar.h"

#include <QAbstractButton>
#include <QMouseEvent>
#include <QStyleOptionTab>
#include <QStylePainter>
#include <algorithm>

#include "desk/core/language/Localized.h"
#include "desk/toolkit/Theme.h"

namespace desk {
namespace {

constexpr int kCloseSize = 16;
constexpr qreal kCross = 3.5;

/// Closes its tab.
class CloseButton : public QAbstractButton {
public:
    explicit CloseButton(ProjectTabBar& bar) : QAbstractButton(&bar) {
        const QString name = Localized("$$$/Desk/Projects/CloseTab=Close Project");
        setAccessibleName(name);
        setToolTip(name);
        setFocusPolicy(Qt::NoFocus);
        setFixedSize(kCloseSize, kCloseSize);
        connect(this, &QAbstractButton::clicked, &bar, [this, &bar] {
            for (int i = 0; i < bar.count(); ++i)
                if (bar.tabButton(i, QTabBar::RightSide) == this) return Q_EMIT bar.tabCloseRequested(i);
        });
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const bool isPointedAt = underMouse() || isDown();
        painter.setPen(QPen(Theme::Color(isPointedAt ? ThemeColor::Text : ThemeColor::SecondaryText), 1.2));
        painter.translate(QRectF(rect()).center());
        painter.drawLines(
            QVector<QLineF>{{-kCross, -kCross, kCross, kCross}, {-kCross, kCross, kCross, -kCross}});
    }
    void enterEvent(QEnterEvent*) override { update(); }
    void leaveEvent(QEvent*) override { update(); }
};

}  // namespace

ProjectTabBar::ProjectTabBar(QWidget* parent) : QTabBar(parent) {
    setMovable(true);
    setElideMode(Qt::ElideMiddle);
    setExpanding(false);
    setContextMenuPolicy(Qt::CustomContextMenu);
}

void ProjectTabBar::SetItalic(int index, bool isItalic) {
    if (IsItalic(index) == isItalic) return;
    setTabData(index, isItalic);
    update();
}

void ProjectTabBar::tabInserted(int index) {
    setTabButton(index, QTabBar::RightSide, new CloseButton(*this));
    QTabBar::tabInserted(index);
}

/// Qt draws all titles in one font: those in italics it draws without a title.
void ProjectTabBar::initStyleOption(QStyleOptionTab* option, int index) const {
    QTabBar::initStyleOption(option, index);
    if (mIsPainting && IsItalic(index)) option->text.clear();
}

QSize ProjectTabBar::tabSizeHint(int index) const {
    constexpr int kItalicOverhang = 4;
    return QTabBar::tabSizeHint(index) + QSize(IsItalic(index) ? kItalicOverhang : 0, 0);
}

/// Qt would let titles shrink to nothing but dots before the bar can be scrolled.
QSize ProjectTabBar::minimumTabSizeHint(int index) const {
    constexpr int kLegibleCharacters = 20;
    const QSize full = tabSizeHint(index);
    return {std::min(full.width(), fontMetrics().averageCharWidth() * kLegibleCharacters), full.height()};
}

void ProjectTabBar::paintEvent(QPaintEvent* event) {
    mIsPainting = true;
    QTabBar::paintEvent(event);
    mIsPainting = false;
    QStylePainter painter(this);
    QFont italic = font();
    italic.setItalic(true);
    painter.setFont(italic);
    for (int i = 0; i < count(); ++i) {
        if (!IsItalic(i)) continue;
        QStyleOptionTab option;
        initStyleOption(&option, i);
        painter.setPen(Theme::Color(i == currentIndex() ? ThemeColor::Text : ThemeColor::SecondaryText));
        painter.drawText(style()->subElementRect(QStyle::SE_TabBarTabText, &option, this),
                         Qt::AlignCenter | Qt::TextSingleLine, option.text);
    }
}

void ProjectTabBar::mouseReleaseEvent(QMouseEvent* event) {
    const int index = tabAt(event->position().toPoint());
    if (event->button() != Qt::MiddleButton || index < 0) return QTabBar::mouseReleaseEvent(event);
    Q_EMIT tabCloseRequested(index);
}

}  // namespace desk
