#include "desk/toolkit/ThemeStyleSheet.h"

#include <utility>

#include "desk/toolkit/Theme.h"

namespace desk {

namespace {

// @names are replaced by the theme's colours.
constexpr char kTemplate[] = R"(
QMainWindow, QDialog, QMessageBox { background: @window; }
QDialogButtonBox { dialogbuttonbox-buttons-have-icons: 0; }
QMainWindow::separator { background: @gap; width: 1px; height: 1px; }
QMainWindow::separator:hover { background: @accent; }

QMenuBar { background: @bar; color: @text; padding: 1px 2px; border: none; }
QMenuBar::item { padding: 4px 8px; background: transparent; }
QMenuBar::item:selected, QMenuBar::item:pressed { background: @selection; color: @selectionText; }
QMenu { background: @header; color: @text; border: 1px solid @line; padding: 4px 0; }
QMenu::item { padding: 4px 28px 4px 24px; background: transparent; }
QMenu::item:selected { background: @selection; color: @selectionText; }
QMenu::item:disabled { color: @disabled; background: transparent; }
QMenu::item:disabled:selected { color: @secondary; background: @hover; }
QMenu::separator { height: 1px; background: @line; margin: 4px 0; }
QMenu::indicator { width: 12px; height: 12px; left: 7px; }

QStatusBar { background: @bar; color: @secondary; border: none; }
QStatusBar::item { border: none; }
QLabel[secondary="true"] { color: @secondary; }
QStatusBar QLabel { color: @secondary; padding: 0 8px; }

QDockWidget { color: @text; background: @window; titlebar-close-icon: none; titlebar-normal-icon: none; }
QDockWidget::title { background: @tabBar; border: none; padding: 6px 12px; text-align: left; }

QTabBar { background: @tabBar; border: none; qproperty-drawBase: 0; }
QTabBar::tab { background: @tabBar; color: @secondary; padding: 7px 16px; border: none; border-top: 2px solid transparent; }
QTabBar::tab:selected { background: @window; color: @text; border-top: 2px solid @accent; }
QTabBar::tab:focus { background: @hover; }
QTabBar::tab:hover:!selected { color: @text; }
QTabWidget::pane { border: none; background: @window; }

QLineEdit { background: @field; color: @text; border: 1px solid @line; border-radius: 3px; padding: 2px 5px;
  selection-background-color: @selection; selection-color: @selectionText; }
QLineEdit:focus { border: 1px solid @accent; }
QLineEdit[nodeTextEdit="true"] { border-radius: 2px; padding: 0; }
QLineEdit:disabled { color: @disabled; }

QToolButton { background: transparent; border: none; border-radius: 3px; padding: 2px; color: @text; }
QToolButton:hover:enabled { background: @hover; }
QToolButton:pressed:enabled { background: @selection; }
QToolButton:focus { border: 1px solid @accent; }
QPushButton { background: @header; color: @text; border: 1px solid @line; border-radius: 3px; padding: 5px 16px; min-width: 64px; }
QPushButton:hover { background: @hover; }
QPushButton:pressed { background: @selection; color: @selectionText; }
QPushButton:default, QPushButton:focus { border: 1px solid @accent; }
QPushButton:disabled { color: @disabled; }
QTreeView { background: @tree; color: @text; border: 1px solid @line; outline: none; }
QHeaderView { background: @header; border: none; }
QPlainTextEdit, QTextEdit { background: @window; color: @text; border: none;
  selection-background-color: @selection; selection-color: @selectionText; }

QScrollBar:vertical { background: transparent; width: 12px; margin: 0; }
QScrollBar:horizontal { background: transparent; height: 12px; margin: 0; }
QScrollBar::handle { background: @handle; border-radius: 4px; margin: 2px; }
QScrollBar::handle:vertical { min-height: 28px; }
QScrollBar::handle:horizontal { min-width: 28px; }
QScrollBar::handle:hover, QScrollBar::handle:pressed { background: @secondary; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
QAbstractScrollArea::corner { background: @tree; border: none; }

QToolTip { background: @header; color: @text; border: 1px solid @line; padding: 3px 5px; }
QProgressBar { background: @field; border: none; border-radius: 2px; height: 4px; text-align: center; color: transparent; }
QProgressBar::chunk { background: @accent; border-radius: 2px; }
)";

QColor Blend(ThemeColor first, ThemeColor second, double part) {
    const QColor a = Theme::Color(first);
    const QColor b = Theme::Color(second);
    const auto mix = [part](int x, int y) { return int(x + (y - x) * part); };
    return QColor(mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue()));
}

}  // namespace

QString MakeStyleSheet() {
    using enum ThemeColor;
    QString sheet = QString::fromLatin1(kTemplate);
    const bool isDark = Theme::CurrentKind() == ThemeKind::Dark;
    const std::pair<const char*, QColor> names[] = {{"@selectionText", Theme::Color(SelectionText)},
                                                    {"@selection", Theme::Color(Selection)},
                                                    {"@secondary", Theme::Color(SecondaryText)},
                                                    {"@disabled", Theme::Color(DisabledText)},
                                                    {"@window", Theme::Color(WindowBackground)},
                                                    {"@tabBar", isDark ? QColor(0x1a1d21) : QColor(0xdadee4)},
                                                    {"@accent", Theme::Color(Accent)},
                                                    {"@header", Theme::Color(HeaderBackground)},
                                                    {"@handle", Blend(Line, SecondaryText, 0.25)},
                                                    {"@hover", Blend(HeaderBackground, SecondaryText, 0.15)},
                                                    {"@field", Theme::Color(FieldBackground)},
                                                    {"@line", Theme::Color(Line)},
                                                    {"@tree", Theme::Color(TreeBackground)},
                                                    {"@text", Theme::Color(Text)},
                                                    {"@bar", Theme::Color(PanelBackground)},
                                                    {"@gap", isDark ? QColor(0x101215) : QColor(0xc3c9d1)}};
    for (const auto& [name, color] : names) sheet.replace(QLatin1String(name), color.name());
    return sheet;
}

}  // namespace desk
