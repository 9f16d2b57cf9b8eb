#include "desk/app/ProjectArea.h"

#include <QFontInfo>
#include <QLabel>
#include <QTabWidget>
#include <QVBoxLayout>

#include "desk/core/QtStrings.h"
#include "host/core/Localizer.h"

namespace desk {
namespace {

QLabel* MakeLine(const char* key, double scale, bool isEnabled) {
    auto* label = new QLabel(ToQString(host::ZString(key)));
    QFont font = label->font();
    font.setPixelSize(qRound(QFontInfo(font).pixelSize() * scale));
    label->setFont(font);
    label->setEnabled(isEnabled);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    return label;
}

QWidget* MakeEmptyPage() {
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    layout->addStretch(2);
    layout->addWidget(MakeLine("$$$/Desk/Projects/None=No project is open", 1.3, true));
    layout->addWidget(
        MakeLine("$$$/Desk/Projects/Hint=Projects that you open have their place here.", 1, false));
    layout->addStretch(3);
    return page;
}

}  // namespace

ProjectArea::ProjectArea(QWidget* parent) : QStackedWidget(parent), mProjects(new QTabWidget) {
    mProjects->setDocumentMode(true);
    mProjects->setMovable(true);
    addWidget(MakeEmptyPage());
    addWidget(mProjects);
    setMinimumWidth(160);
}

}  // namespace desk
