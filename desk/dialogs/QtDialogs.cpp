#include "desk/dialogs/QtDialogs.h"

#include <QFileDialog>
#include <QMessageBox>

#include "desk/core/language/Localized.h"
#include "desk/core/names/QtStrings.h"
#include "desk/dialogs/DialogParts.h"
#include "desk/dialogs/StartFolder.h"
#include "desk/toolkit/Theme.h"
#include "host/files/PathUtils.h"

namespace desk {

namespace {

/// Lets the user choose; empty when the user cancels.
std::optional<host::UTF16String> Run(QFileDialog& dialog) {
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
    return host::PathUtils::ToNormalizedPath(ToUTF16(dialog.selectedFiles().constFirst()));
}

}  // namespace

void QtDialogs::ShowMessage(const host::UTF16String& title, const host::UTF16String& text, MessageKind kind) {
    QMessageBox box(QMessageBox::NoIcon, {}, ToDisplayLines(text), QMessageBox::NoButton, FindParentWindow());
    box.setTextFormat(Qt::PlainText);
    SetPicture(box, kind == MessageKind::Failure ? "warning" : "information");
    box.addButton(Localized("$$$/Desk/Dialogs/OK=OK"), QMessageBox::AcceptRole);
    SetTitle(box, title);
    box.exec();
}

std::optional<host::UTF16String> QtDialogs::AskFolder(const host::UTF16String& title,
                                                      const host::UTF16String& startFolder) {
    QFileDialog dialog(FindParentWindow(), ToDisplayText(title), FindStartFolder(startFolder));
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    return Run(dialog);
}

std::optional<host::UTF16String> QtDialogs::AskNewFolder(const host::UTF16String& title,
                                                         const host::UTF16String& startFolder) {
    QFileDialog dialog(FindParentWindow(), ToDisplayText(title), FindStartFolder(startFolder));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    // The caller says what it thinks of a name that is taken.
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    dialog.setLabelText(QFileDialog::Accept, Localized("$$$/Vantor/Desk/Dialogs/CreateFolder=Create"));
    return Run(dialog);
}

}  // namespace desk
