#include "desk/dialogs/DialogParts.h"

#include <QApplication>
#include <QMessageBox>
#include <QStringList>
#include <QWidget>
#include <string>

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

/// Lines break at blanks only; one path would make the dialog as wide as the screen.
constexpr qsizetype kLongWord = 60;

QString WithPlacesToBreak(const QString& line) {
    QStringList words = line.split(QLatin1Char(' '));
    for (QString& word : words)
        if (word.size() > kLongWord) word.replace(QLatin1Char('/'), QStringLiteral("/\u200B"));
    return words.join(QLatin1Char(' '));
}

}  // namespace

QString ToDisplayLines(std::u16string_view text) {
    QStringList lines;
    for (;;) {
        std::size_t end = text.find(u'\n');
        lines << WithPlacesToBreak(ToDisplayText(text.substr(0, end)));
        if (end == std::u16string_view::npos) return lines.join(QLatin1Char('\n'));
        text.remove_prefix(end + 1);
    }
}

void SetPicture(QMessageBox& box, std::string_view kind) {
    constexpr qreal kSize = 32;
    box.setIconPixmap(Theme::Picture("message-" + std::string(kind), kSize, box.devicePixelRatioF()));
}

}  // namespace desk
