#include "desk/app/ElidedLabel.h"

#include <QPainter>
#include <QStyle>

namespace desk {

ElidedLabel::ElidedLabel(Qt::TextElideMode mode, QWidget* parent) : QLabel(parent), mMode(mode) {
    setTextFormat(Qt::PlainText);
}

void ElidedLabel::SetFullText(const QString& text) {
    if (text == QLabel::text()) return;
    setText(text);
    UpdateToolTip();
}

QSize ElidedLabel::minimumSizeHint() const {
    return {fontMetrics().averageCharWidth() * 4, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QString shown = fontMetrics().elidedText(text(), mMode, contentsRect().width());
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment()), palette(), isEnabled(),
                          shown, foregroundRole());
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    UpdateToolTip();
}

bool ElidedLabel::HasRoom() const {
    return fontMetrics().horizontalAdvance(text()) <= contentsRect().width();
}

/// A tool tip that looks like markup would be shown as such.
void ElidedLabel::UpdateToolTip() {
    setToolTip(HasRoom() ? QString() : QStringLiteral("<span>%1</span>").arg(text().toHtmlEscaped()));
}

}  // namespace desk
