// Questions with buttons, texts and files.

#include <QCheckBox>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

#include "desk/core/language/Localized.h"
#include "desk/core/names/QtStrings.h"
#include "desk/dialogs/DialogParts.h"
#include "desk/dialogs/QtDialogs.h"
#include "desk/dialogs/StartFolder.h"
#include "desk/toolkit/Theme.h"
#include "host/files/PathUtils.h"

namespace desk {

namespace {

constexpr int kTextWidth = 380;

QString ButtonText(const host::UTF16String& text) {
    return ToDisplayText(text).replace(QLatin1Char('&'), QLatin1String("&&"));
}

host::UTF16String ToPath(const QString& file) {
    return host::PathUtils::ToNormalizedPath(ToUTF16(file));
}

}  // namespace

Answer QtDialogs::Ask(const Question& question) {
    QMessageBox box(QMessageBox::NoIcon, {}, ToDisplayLines(question.mText), QMessageBox::NoButton,
                    FindParentWindow());
    box.setTextFormat(Qt::PlainText);
    SetPicture(box, question.mIsWarning ? "warning" : "question");
    QList<QAbstractButton*> buttons;
    for (std::size_t i = 0; i < question.mButtons.size(); ++i)
        buttons << box.addButton(ButtonText(question.mButtons[i]),
                                 i == question.mCancel ? QMessageBox::RejectRole : QMessageBox::AcceptRole);
    box.setDefaultButton(qobject_cast<QPushButton*>(buttons.constFirst()));
    box.setEscapeButton(buttons.at(static_cast<qsizetype>(question.mCancel)));
    if (question.mOffersApplyToAll)
        box.setCheckBox(new QCheckBox(Localized("$$$/Desk/Dialogs/ApplyToAll=Apply to all")));
    SetTitle(box, question.mTitle);
    box.exec();
    const qsizetype pressed = buttons.indexOf(box.clickedButton());
    return {pressed < 0 ? question.mCancel : static_cast<std::size_t>(pressed),
            box.checkBox() && box.checkBox()->isChecked()};
}

std::optional<host::UTF16String> QtDialogs::AskText(const host::UTF16String& title,
                                                    const host::UTF16String& label,
                                                    const host::UTF16String& value) {
    QInputDialog dialog(FindParentWindow());
    dialog.setWindowTitle(ToWindowTitle(ToDisplayText(title)));
    dialog.setLabelText(ToDisplayText(label));
    dialog.setTextValue(ToQString(value));
    dialog.setOkButtonText(Localized("$$$/Desk/Dialogs/OK=OK"));
    dialog.setCancelButtonText(Localized("$$$/Desk/Dialogs/Cancel=Cancel"));
    dialog.resize(kTextWidth, dialog.sizeHint().height());
    if (auto* box = dialog.findChild<QLineEdit*>()) {
        box->setAccessibleName(ToDisplayText(label));
        box->selectAll();
    }
    if (dialog.exec() != QDialog::Accepted) return {};
    return ToUTF16(dialog.textValue());
}

host::UTF16StringVec QtDialogs::AskFiles(const host::UTF16String& title, const host::UTF16String& startFolder,
                                         const host::UTF16String& typeLabel, const host::UTF16String& pattern) {
    QFileDialog dialog(FindParentWindow(), ToDisplayText(title), FindStartFolder(startFolder));
    dialog.setFileMode(QFileDialog::ExistingFiles);
    // The label may hold the pattern in parentheses, as the filter's text does.
    const QString label = ToQString(typeLabel).section(QLatin1String(" ("), 0, 0);
    // Some systems' own dialogs look at letter case.
    const QString shown = ToQString(pattern);
    dialog.setNameFilter(QStringLiteral("%1 (%2 %3)").arg(label, shown.toLower(), shown.toUpper()));
    host::UTF16StringVec files;
    if (dialog.exec() == QDialog::Accepted)
        for (const QString& file : dialog.selectedFiles()) files.push_back(ToPath(file));
    return files;
}

std::optional<host::UTF16String> QtDialogs::AskNewFile(const host::UTF16String& title,
                                                       const host::UTF16String& path) {
    QFileDialog dialog(FindParentWindow(), ToDisplayText(title),
                       FindStartFolder(host::PathUtils::GetFullDirectoryPart(path)));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.selectFile(ToQString(host::PathUtils::GetFullFilePart(path)));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
    return ToPath(dialog.selectedFiles().constFirst());
}

}  // namespace desk
