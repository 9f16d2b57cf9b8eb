#include "desk/app/RecoveryRow.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

#include "desk/app/ElidedLabel.h"
#include "desk/app/ProjectTexts.h"
#include "desk/app/RecoveryTexts.h"
#include "desk/core/language/Localized.h"
#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/Theme.h"

namespace desk {
namespace {

constexpr int kMargin = 14;
constexpr int kLineGap = 4;
constexpr int kButtonGap = 6;

QWidget* MakeColumn(QWidget* parent, int gap) {
    auto* column = new QWidget(parent);
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(gap);
    return column;
}

}  // namespace

RecoveryRow::RecoveryRow(KeptTextFile file, QWidget* parent)
    : QWidget(parent),
      mFile(std::move(file)),
      mLines(MakeColumn(this, kLineGap)),
      mButtons(MakeColumn(this, kButtonGap)) {
    const QString name = ProjectName(mFile.mText.mProject);
    setAccessibleName(name);
    ElidedLabel* title = AddLine(name, false, Qt::ElideMiddle);
    QFont font = title->font();
    font.setBold(true);
    title->setFont(font);
    AddLine(DescribeFolder(mFile.mText), true, Qt::ElideMiddle);
    AddLine(DescribeText(mFile), false, Qt::ElideRight);
    mFound = AddLine(DescribeFile(std::nullopt), false, Qt::ElideRight);
    AddButton(Localized("$$$/Desk/Recovery/Open=Open Recovered Text"), &RecoveryRow::OpenChosen);
    AddButton(Localized("$$$/Desk/Commands/SaveAsCopy=Save as Copy…"), &RecoveryRow::CopyChosen);
    AddButton(Localized("$$$/Desk/Recovery/Discard=Discard…"), &RecoveryRow::DiscardChosen);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    layout->setSpacing(kMargin);
    layout->addWidget(mLines, 1, Qt::AlignTop);
    layout->addWidget(mButtons, 0, Qt::AlignTop);
}

ElidedLabel* RecoveryRow::AddLine(const QString& text, bool isSecondary, Qt::TextElideMode mode) {
    auto* line = new ElidedLabel(mode, mLines);
    line->setProperty("secondary", isSecondary);
    line->SetFullText(text);
    mLines->layout()->addWidget(line);
    return line;
}

QPushButton* RecoveryRow::AddButton(const QString& text, void (RecoveryRow::*chosen)()) {
    auto* button = new QPushButton(text, mButtons);
    button->setAutoDefault(false);
    button->setAccessibleName(text + QLatin1String(": ") + accessibleName());
    connect(button, &QPushButton::clicked, this, chosen);
    mButtons->layout()->addWidget(button);
    return button;
}

void RecoveryRow::ShowFound(const FileSinceKept& found) {
    mFound->SetFullText(DescribeFile(found));
}

void RecoveryRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(QRect(0, height() - 1, width(), 1), Theme::Color(ThemeColor::Line));
}

}  // namespace desk
