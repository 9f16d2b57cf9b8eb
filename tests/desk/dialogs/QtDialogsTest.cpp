#include <gtest/gtest.h>

#include <QTest>
#include <QtWidgets>

#include "desk/core/language/LanguageTable.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/dialogs/QtDialogs.h"

namespace desk {
namespace {

/// Does `act` with the next dialog, once it shows.
template <class Act>
void WhenShown(Act act) {
    QTimer::singleShot(0, qApp, [act] {
        QWidget* dialog = QApplication::activeModalWidget();
        ASSERT_TRUE(dialog);
        act(*dialog);
    });
}

QStringList ButtonTexts(const QWidget& dialog) {
    QStringList texts;
    for (const QPushButton* button : dialog.findChildren<QPushButton*>()) texts << button->text();
    texts.sort();
    return texts;
}

TEST(QtDialogsTest, TheTextIsSelectedSoThatTypingReplacesItAndEnterAccepts) {
    QtDialogs dialogs;
    SetLanguage("de", "");
    WhenShown([](QWidget& dialog) {
        EXPECT_EQ(dialog.windowTitle(), QStringLiteral("New Folder"));
        EXPECT_EQ(dialog.findChild<QLabel*>()->text(), QStringLiteral("Name"));
        EXPECT_EQ(ButtonTexts(dialog), (QStringList{QStringLiteral("Abbrechen"), QStringLiteral("OK")}));
        QLineEdit& box = *dialog.findChild<QLineEdit*>();
        EXPECT_EQ(box.selectedText(), QStringLiteral("Untitled"));
        QTest::keyClicks(&box, QStringLiteral("Reel"));
        QTest::keyClick(&box, Qt::Key_Return);
    });
    EXPECT_EQ(dialogs.AskText(u"New Folder", u"Name", u"Untitled"), u"Reel");
    WhenShown([](QWidget& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    EXPECT_EQ(dialogs.AskText(u"New Folder", u"Name", u"Untitled"), std::nullopt);
    SetLanguage("en", "");
}

TEST(QtDialogsTest, QuestionsHaveTheirButtonsAndClosingIsCancelling) {
    QtDialogs dialogs;
    Question question{.mTitle = u"Save Changes of the Project x[*] Before It Is Closed for Good?",
                      .mText = u"/a" + host::UTF16String(300, u'x') + u"/b\nSecond",
                      .mButtons = {u"Save & Close", u"Discard", u"Cancel"},
                      .mCancel = 2,
                      .mOffersApplyToAll = true};
    WhenShown([](QWidget& dialog) {
        const auto& box = dynamic_cast<QMessageBox&>(dialog);
        const QString title = box.windowHandle()->title();
        EXPECT_NE(title.indexOf(QStringLiteral("Project x[*] Before")), -1) << title.toStdString();
        EXPECT_EQ(box.defaultButton()->text(), QStringLiteral("Save && Close"));
        EXPECT_LT(box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))->minimumSizeHint().width(), 700)
            << "a long name is broken";
        EXPECT_TRUE(box.text().endsWith(QStringLiteral("\nSecond")));
        box.checkBox()->setChecked(true);
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    const Answer cancelled = dialogs.Ask(question);
    EXPECT_EQ(cancelled.mButton, 2u);
    EXPECT_TRUE(cancelled.mAppliesToAll);
    WhenShown([](QWidget& dialog) {
        for (QPushButton* button : dialog.findChildren<QPushButton*>())
            if (button->text() == QStringLiteral("Discard")) return button->click();
    });
    EXPECT_EQ(dialogs.Ask(question).mButton, 1u);
}

TEST(QtDialogsTest, AMessageIsAsWideAsItsTitleInAFrame) {
    constexpr char16_t kTitle[] = u"The Copy Was Not Made As You Wanted It";
    WhenShown([&](QWidget& dialog) {
        QFont bold = dialog.font();
        bold.setBold(true);
        const QString shown =
            ToQString(kTitle) + QStringLiteral(" — ") + QGuiApplication::applicationDisplayName();
        EXPECT_GT(dialog.width(), QFontMetrics(bold).horizontalAdvance(shown) + 100);
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    QtDialogs().ShowMessage(kTitle, u"No.", MessageKind::Failure);
}

TEST(QtDialogsTest, WaitingNamesTheItemAsItStandsAndCanBeCancelled) {
    WorkProgress progress;
    progress.SetItem(u"<b>Reel");
    std::promise<void> done;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        const QWidget* dialog = QApplication::activeModalWidget();
        if (progress.IsCancelled()) return poll.stop(), done.set_value();
        if (!dialog) return;
        EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Copying"));
        EXPECT_EQ(dialog->findChild<QLabel*>()->text(), QStringLiteral("<b>Reel"));
        EXPECT_EQ(dialog->findChild<QLabel*>()->textFormat(), Qt::PlainText);
        dialog->findChild<QPushButton*>()->click();
        EXPECT_TRUE(dialog->isVisible()) << "the work has not ended yet";
        EXPECT_EQ(dialog->findChild<QPushButton*>()->text(), QStringLiteral("Cancelling…"));
    });
    poll.start(30);
    QtDialogs().WaitFor(u"Copying", progress, done.get_future());
    EXPECT_TRUE(progress.IsCancelled());
}

}  // namespace
}  // namespace desk
