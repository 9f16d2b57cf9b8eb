#include "desk/dialogs/DialogParts.h"

#include <QApplication>
#include <QFontMetrics>
#include <QGridLayout>
#include <QMessageBox>
#include <QSpacerItem>
#include <QStringList>
#include <QTextBoundaryFinder>
#include <QWidget>
#include <string>

#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/Theme.h"

namespace desk {

QWidget* FindParentWindow() {
    if (QWidget* window = QApplication::activeModalWidget()) return window;
    if (QWidget* window = QApplication::activeWindow()) return window;
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows)
        if (window->isVisible() && window->windowType() == Qt::Window) return window;
    return nullptr;
}

namespace {

/// Lines break at blanks only; one path or name would make the dialog as wide as the screen.
constexpr qsizetype kLongWord = 60;

/// Behind each separator, and within what is still too long.
QString WithPlacesToBreak(const QString& word) {
    constexpr QChar kPlace(0x200B);
    QString text;
    qsizetype size = 0;
    QTextBoundaryFinder letters(QTextBoundaryFinder::Grapheme, word);
    for (qsizetype begin = 0, end; (end = letters.toNextBoundary()) > begin; begin = end) {
        text += QStringView(word).mid(begin, end - begin);
        size += end - begin;
        if (word[begin] != QLatin1Char('/') && size < kLongWord) continue;
        text += kPlace;
        size = 0;
    }
    return text;
}

QString BreakLongWords(const QString& line) {
    QStringList words = line.split(QLatin1Char(' '));
    for (QString& word : words)
        if (word.size() > kLongWord) word = WithPlacesToBreak(word);
    return words.join(QLatin1Char(' '));
}

}  // namespace

QString ToDisplayLines(std::u16string_view text) {
    QStringList lines;
    for (;;) {
        std::size_t end = text.find(u'\n');
        lines << BreakLongWords(ToDisplayText(text.substr(0, end)));
        if (end == std::u16string_view::npos) return lines.join(QLatin1Char('\n'));
        text.remove_prefix(end + 1);
    }
}

void SetTitle(QMessageBox& box, std::u16string_view title) {
    // The frame's icon and buttons; its font is the window manager's, most often bold.
    constexpr int kBesideTitle = 140;
    const QString text = ToDisplayText(title);
    box.setWindowTitle(ToWindowTitle(text));
    QFont font = QApplication::font("QMdiSubWindowTitleBar");
    font.setBold(true);
    // Under X11 Qt puts the program's name behind the title.
    const QString shown = text + QStringLiteral(" — ") + QGuiApplication::applicationDisplayName();
    const int width = QFontMetrics(font).horizontalAdvance(shown) + kBesideTitle;
    // A message box sets its own width: that of its layout.
    if (auto* layout = qobject_cast<QGridLayout*>(box.layout()))
        layout->addItem(new QSpacerItem(width, 0), layout->rowCount(), 0, 1, layout->columnCount());
}

void SetPicture(QMessageBox& box, std::string_view kind) {
    constexpr qreal kSize = 32;
    box.setIconPixmap(Theme::Picture("message-" + std::string(kind), kSize, box.devicePixelRatioF()));
}

}  // namespace desk
