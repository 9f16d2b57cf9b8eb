/// A plug-in that lets a test drive the real program: it reads a request a line from standard input, and
/// answers each with a line on standard output. What is done may open a dialog, so it is done after the answer.
#include <unistd.h>

#include <QAbstractButton>
#include <QApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QSocketNotifier>
#include <QTabBar>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <functional>

#include "desk/framework/CommandRouter.h"
#include "host/framework/PluginEntry.h"

namespace {

template <class Widget>
QList<Widget*> FindShown() {
    QList<Widget*> shown;
    for (QWidget* widget : QApplication::allWidgets())
        if (auto* found = qobject_cast<Widget*>(widget); found && found->isVisible()) shown << found;
    return shown;
}

/// Of the tree's rows and of the field that has the keyboard.
QStringList TextsOfRows() {
    QStringList texts;
    for (const auto* tree : FindShown<QTreeView>())
        for (QModelIndex row = tree->model()->index(0, 0); row.isValid(); row = tree->indexBelow(row))
            texts << (tree->selectionModel()->isSelected(row) ? QStringLiteral("selected ")
                                                              : QStringLiteral("row ")) +
                         row.data(Qt::AccessibleTextRole).toString();
    if (const auto* field = qobject_cast<QLineEdit*>(QApplication::focusWidget()))
        texts << QStringLiteral("field ") + field->accessibleName();
    if (const auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget()))
        for (const QAction* entry : menu->actions()) texts << QStringLiteral("menu ") + entry->text();
    return texts;
}

/// All that can be read on the screen, but for editors.
QStringList Texts() {
    QStringList texts;
    for (const QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible()) texts << window->windowTitle();
    for (const auto* label : FindShown<QLabel>()) texts << label->text() << label->accessibleName();
    for (const auto* button : FindShown<QAbstractButton>()) texts << button->text();
    for (const auto* bar : FindShown<QTabBar>())
        for (int i = 0; i < bar->count(); ++i) texts << bar->tabText(i);
    texts << TextsOfRows();
    texts.removeAll(QString());
    return texts;
}

QPlainTextEdit* FindEditor() {
    const auto editors = FindShown<QPlainTextEdit>();
    return editors.isEmpty() ? nullptr : editors.first();
}

QString ToLine(const QStringList& texts) {
    return QString::fromUtf8(QJsonDocument(QJsonArray::fromStringList(texts)).toJson(QJsonDocument::Compact));
}

void Later(const std::function<void()>& action) {
    QTimer::singleShot(0, qApp, action);
}

QString Press(const QString& text) {
    for (auto* button : FindShown<QAbstractButton>()) {
        if (QString(button->text()).remove(QLatin1Char('&')) != text) continue;
        Later([button = QPointer(button)] {
            if (button) QTest::mouseClick(button, Qt::LeftButton);
        });
        return QStringLiteral("ok");
    }
    return QStringLiteral("no such button");
}

QString PressKeys(const QString& keys) {
    const QKeyCombination key = QKeySequence::fromString(keys, QKeySequence::PortableText)[0];
    Later([key] {
        QWidget* popup = QApplication::activePopupWidget();
        if (QWidget* target = popup ? popup : QApplication::focusWidget())
            QTest::keyClick(target, key.key(), key.keyboardModifiers());
    });
    return QStringLiteral("ok");
}

QString Write(const QString& text) {
    QTest::keyClicks(QApplication::focusWidget(), text);
    return QStringLiteral("ok");
}

QString Click(const QString& name) {
    for (auto* tree : FindShown<QTreeView>()) {
        const QModelIndexList rows = tree->model()->match(tree->model()->index(0, 0), Qt::AccessibleTextRole,
                                                          name, 1, Qt::MatchStartsWith);
        if (rows.isEmpty()) continue;
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {},
                          tree->visualRect(rows[0]).topLeft() + QPoint(70, 12));
        return QStringLiteral("ok");
    }
    return QStringLiteral("no such row");
}

QString Answer(const QString& request) {
    const QString verb = request.section(QLatin1Char(' '), 0, 0);
    const QString rest = request.section(QLatin1Char(' '), 1);
    if (verb == QLatin1String("press")) return Press(rest);
    if (verb == QLatin1String("keys")) return PressKeys(rest);
    if (verb == QLatin1String("write")) return Write(rest);
    if (verb == QLatin1String("click")) return Click(rest);
    if (verb == QLatin1String("texts")) return ToLine(Texts());
    if (verb == QLatin1String("editor"))
        return ToLine(FindEditor() ? QStringList(FindEditor()->toPlainText()) : QStringList());
    if (verb != QLatin1String("send")) return QStringLiteral("what?");
    if (!desk::CommandRouter::Instance().FindStatus(rest.toInt()).mIsEnabled) return QStringLiteral("disabled");
    Later([id = rest.toInt()] { desk::CommandRouter::Instance().Send(id); });
    return QStringLiteral("ok");
}

class Driver {
public:
    Driver() : mNotifier(STDIN_FILENO, QSocketNotifier::Read) {
        QObject::connect(&mNotifier, &QSocketNotifier::activated, &mNotifier, [this] { Read(); });
    }

private:
    void Read() {
        char bytes[4096];
        const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
        if (count <= 0) return mNotifier.setEnabled(false);
        mUnread.append(bytes, static_cast<qsizetype>(count));
        for (qsizetype end; (end = mUnread.indexOf('\n')) >= 0; mUnread.remove(0, end + 1)) {
            const QByteArray answer = Answer(QString::fromUtf8(mUnread.left(end))).toUtf8() + '\n';
            if (::write(STDOUT_FILENO, answer.constData(), static_cast<std::size_t>(answer.size())) < 0) return;
        }
    }

    QSocketNotifier mNotifier;
    QByteArray mUnread;
};

/// Ends with the process.
[[maybe_unused]] Driver& sDriver = *new Driver;

}  // namespace

ZUHOST_PLUGIN_ENTRY("Driver");
