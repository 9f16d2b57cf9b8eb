#include <gtest/gtest.h>

#include <QPushButton>

#include "desk/app/ProjectNotice.h"
#include "desk/app/ProjectTabBar.h"
#include "desk/toolkit/Theme.h"

namespace desk {

TEST(NarrowWindow, LeavesButtonsAndTabTitlesLegible) {
    Theme::Apply(ThemeKind::Dark);
    QWidget place;
    place.resize(190, 400);
    auto* notice = new ProjectNotice(&place);
    notice->SetText(QStringLiteral("Read-only. Locked by anna on edit-bay-2, since yesterday."));
    notice->AddButton("$$$/Test/Switch=Switch to Read-Write", 1);
    auto* bar = new ProjectTabBar(&place);
    for (const char* title : {"Reel 1", "Reel 2", "Reel 10"}) bar->addTab(QString::fromLatin1(title));
    notice->setGeometry(0, 0, 190, 200);
    bar->setGeometry(0, 200, 190, 40);
    place.show();
    const auto* button = notice->findChild<QPushButton*>();
    EXPECT_GE(button->width(), button->sizeHint().width());
    for (int i = 0; i < bar->count(); ++i)
        EXPECT_GE(bar->tabRect(i).width(), bar->fontMetrics().horizontalAdvance(bar->tabText(i)) + 32) << i;
}

}  // namespace desk
