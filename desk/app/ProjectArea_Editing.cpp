// The commands that the editor of the project in front carries out.
#include <QPlainTextEdit>
#include <QTextCursor>
#include <QTextDocument>

#include "desk/app/ProgramCommands.h"
#include "desk/app/ProjectArea.h"
#include "desk/app/ProjectPage.h"
#include "host/framework/CommandIdentifiers.h"

namespace desk {
namespace {

bool IsEditingCommand(int id) {
    return (id >= kCommandUndo && id <= kCommandPaste) || id == host::CommandID::kSelectAll ||
           id == host::CommandID::kDeselectAll;
}

bool IsEnabled(const QPlainTextEdit& editor, int id) {
    const bool isWritable = !editor.isReadOnly();
    const bool hasSelection = editor.textCursor().hasSelection();
    switch (id) {
        case kCommandUndo:
            return isWritable && editor.document()->isUndoAvailable();
        case kCommandRedo:
            return isWritable && editor.document()->isRedoAvailable();
        case kCommandCut:
            return isWritable && hasSelection;
        case kCommandCopy:
        case host::CommandID::kDeselectAll:
            return hasSelection;
        case kCommandPaste:
            return editor.canPaste();
        default:
            return !editor.document()->isEmpty();
    }
}

void Deselect(QPlainTextEdit& editor) {
    QTextCursor cursor = editor.textCursor();
    cursor.clearSelection();
    editor.setTextCursor(cursor);
}

void Edit(QPlainTextEdit& editor, int id) {
    switch (id) {
        case kCommandUndo:
            return editor.undo();
        case kCommandRedo:
            return editor.redo();
        case kCommandCut:
            return editor.cut();
        case kCommandCopy:
            return editor.copy();
        case kCommandPaste:
            return editor.paste();
        case host::CommandID::kDeselectAll:
            return Deselect(editor);
        default:
            return editor.selectAll();
    }
}

}  // namespace

QPlainTextEdit* ProjectArea::FindFrontEditor() const {
    ProjectPage* page = GetFrontPage();
    return page && page->ShowsText() ? &page->GetEditor() : nullptr;
}

bool ProjectArea::FindCommandStatus(int id, bool& enabled, bool& checked, host::MenuMark& mark,
                                    host::UTF16String& text) {
    if (!IsEditingCommand(id)) return CommandHandler::FindCommandStatus(id, enabled, checked, mark, text);
    const QPlainTextEdit* editor = FindFrontEditor();
    enabled = editor && IsEnabled(*editor, id);
    checked = false;
    mark = host::MenuMark::None;
    return true;
}

bool ProjectArea::ObeyCommand(const host::Command& command) {
    if (!IsEditingCommand(command.GetID())) return CommandHandler::ObeyCommand(command);
    QPlainTextEdit* editor = FindFrontEditor();
    if (editor && IsEnabled(*editor, command.GetID())) Edit(*editor, command.GetID());
    return true;
}

}  // namespace desk
