#include "host/toolkit/UI_ControlView.h"

#include <QTextDocument>
#include <exception>

#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/ControlImpl.h"
#include "desk/toolkit/Theme.h"

namespace desk {

QString ToToolTip(const QString& text) {
    return Qt::mightBeRichText(text) ? QStringLiteral("<qt>%1</qt>").arg(text.toHtmlEscaped()) : text;
}

void ControlImpl::ApplyToWidget() {
    Impl::ApplyToWidget();
    mWidget->setToolTip(ToToolTip(mToolTip));
    mWidget->setProperty(kToolTipDelayProperty, mToolTipDelay);
    if (!mToolTip.isEmpty()) mWidget->setAccessibleName(mToolTip);
}

void ControlImpl::Notify(const host::UI_ChangeFunction& function) {
    if (!function || !*function) return;
    const host::RefPtr<host::UI_Node> keptAlive(mNode);
    const host::UI_ChangeFunction keptFunction = function;
    try {
        (*keptFunction)({static_cast<host::UI_ControlView*>(mNode)});
    } catch (const std::exception& error) {
        Log(LogLevel::Error, std::string("A control's change notification failed: ") + error.what());
    }
}

}  // namespace desk

namespace host {

namespace {
desk::ControlImpl& ImplOf(UI_ControlView& control) {
    return static_cast<desk::ControlImpl&>(control.GetImpl());
}
}  // namespace

UI_ControlView::~UI_ControlView() = default;

void UI_ControlView::SetToolTipText(const UTF16String& text, int delayMilliseconds) {
    ImplOf(*this).mToolTip = desk::ToDisplayText(text);
    ImplOf(*this).mToolTipDelay = delayMilliseconds;
    if (ImplOf(*this).mWidget) ImplOf(*this).ApplyToWidget();
}

void UI_ControlView::NotifyWhenChanged(UI_ChangeFunction function) {
    ImplOf(*this).mChanged = std::move(function);
}

UI_InteractiveControlView::~UI_InteractiveControlView() = default;

void UI_InteractiveControlView::NotifyWhenChangedInteractively(UI_ChangeFunction function) {
    ImplOf(*this).mChangedInteractively = std::move(function);
}

}  // namespace host
