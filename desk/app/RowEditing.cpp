#include "desk/app/RowEditing.h"

#include "desk/app/ProgramCommands.h"
#include "desk/framework/CommandRouter.h"
#include "desk/framework/MainCommander.h"
#include "desk/framework/TabViewImpl.h"
#include "desk/framework/ViewWidget.h"
#include "desk/toolkit/TreeClipboard.h"

namespace desk {
namespace {

const QWidget* ViewOnDuty() {
    const host::TabView* view = CommandRouter::Instance().GetViewOnDuty();
    return view ? TabViewImpl::Of(*view).mWidget.data() : nullptr;
}

void Add(int id, bool (*mayAct)(const QWidget*), void (*act)(const QWidget*)) {
    MainCommander::Instance().Register(
        id,
        [mayAct] { return CommandStatus{.mIsKnown = true, .mIsEnabled = mayAct(ViewOnDuty()), .mText = {}}; },
        [act] {
            act(ViewOnDuty());
            return true;
        });
}

}  // namespace

RowEditing::RowEditing() {
    Add(kCommandCut, CanCutRows, CutRows);
    Add(kCommandPaste, CanPasteOnRows, PasteOnRows);
}

RowEditing::~RowEditing() {
    for (const int command : {kCommandCut, kCommandPaste}) MainCommander::Instance().Register(command, {}, {});
}

}  // namespace desk
