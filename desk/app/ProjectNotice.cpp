#include "desk/app/ProjectNotice.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

#include "desk/core/language/Localized.h"
#include "desk/framework/CommandRouter.h"
#include "desk/toolkit/Theme.h"

namespace desk {
namespace {

constexpr int kMarkWidth = 3;
constexpr int kLeastCharacters = 24;
constexpr int kSpacing = 8;

QString ButtonName(int commandID) {
    return QStringLiteral("command-%1").arg(commandID);
}

}  // namespace

ProjectNotice::ProjectNotice(QWidget* parent)
    : QWidget(parent),
      mText(new QLabel(this)),
      mLayout(new QBoxLayout(QBoxLayout::LeftToRight, this)),
      mButtons(new QBoxLayout(QBoxLayout::LeftToRight)) {
    mText->setTextFormat(Qt::PlainText);
    mText->setWordWrap(true);
    mLayout->setContentsMargins(16, 6, 10, 6);
    mLayout->setSpacing(kSpacing);
    mLayout->addWidget(mText, 1);
    mLayout->addLayout(mButtons);
    mButtons->setSpacing(kSpacing);
    mButtons->addStretch();
}

void ProjectNotice::SetText(const QString& text) {
    mText->setText(text);
    setAccessibleName(text);
}

void ProjectNotice::AddButton(const char* textKey, int commandID) {
    auto* button = new QPushButton(Localized(textKey), this);
    button->setObjectName(ButtonName(commandID));
    button->setAutoDefault(false);
    // What is clicked means the project that it stands above, wherever the keyboard was.
    button->setFocusPolicy(Qt::StrongFocus);
    connect(button, &QPushButton::clicked, this, [commandID] { CommandRouter::Instance().Send(commandID); });
    mButtons->addWidget(button);
}

void ProjectNotice::ShowButton(int commandID, bool show) {
    if (auto* button = findChild<QPushButton*>(ButtonName(commandID))) button->setVisible(show);
    FitButtons();
}

/// The style sheet's least width for buttons replaces the one that their text needs, whenever it is applied.
void ProjectNotice::FitButtons() {
    int width = 0;
    for (auto* button : findChildren<QPushButton*>()) {
        button->ensurePolished();
        button->setMinimumWidth(button->sizeHint().width());
        if (!button->isHidden()) width += button->minimumWidth() + kSpacing;
    }
    const int forText = mLayout->contentsRect().width() - width;
    const bool isNarrow = forText < kLeastCharacters * fontMetrics().averageCharWidth();
    mLayout->setDirection(isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
}

void ProjectNotice::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    FitButtons();
}

void ProjectNotice::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Theme::Color(ThemeColor::HeaderBackground));
    painter.fillRect(QRect(0, 0, kMarkWidth, height()), Theme::Color(ThemeColor::Accent));
    painter.fillRect(QRect(0, height() - 1, width(), 1), Theme::Color(ThemeColor::Line));
}

}  // namespace desk
