#include "host/toolkit/UI_TextEdit.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <algorithm>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/Callback.h"
#include "desk/toolkit/TextEditImpl.h"
#include "desk/toolkit/Theme.h"

namespace desk {

namespace {

class TextField : public QLineEdit {
public:
    TextField(TextEditImpl& node, QWidget* parent) : QLineEdit(parent), mNode(node) {
        setProperty("nodeTextEdit", true);
        // What is dragged over it is meant for what lies below.
        setAcceptDrops(false);
        connect(this, &QLineEdit::textEdited, this, [this] {
            if (mNode.mTyped) mNode.mTyped();
        });
    }

protected:
    bool event(QEvent* event) override {
        // No key is a command's meanwhile; Alt and a letter still open a menu.
        if (event->type() == QEvent::ShortcutOverride &&
            static_cast<QKeyEvent*>(event)->modifiers() != Qt::AltModifier) {
            event->accept();
            return true;
        }
        return QLineEdit::event(event);
    }

    void keyPressEvent(QKeyEvent* event) override {
        const bool isControl = event->modifiers() & Qt::ControlModifier;
        const host::RefPtr<host::UI_Node> keptAlive(mNode.mNode);
        if (event->key() == Qt::Key_Escape)
            mNode.End(host::kEditEnd_Cancelled);
        else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            mNode.End(host::kEditEnd_Committed);
        else if (event->key() == Qt::Key_F6 || (isControl && event->key() == Qt::Key_Tab))
            focusNextPrevChild(true);
        else
            QLineEdit::keyPressEvent(event);
        // What the field has no use for is nobody else's either.
        event->accept();
    }

    void focusInEvent(QFocusEvent* event) override {
        QLineEdit::focusInEvent(event);
        mNode.Begin();
    }

    void focusOutEvent(QFocusEvent* event) override {
        QLineEdit::focusOutEvent(event);
        const QWidget* popup = QApplication::activePopupWidget();
        const bool isOwnMenu = event->reason() == Qt::PopupFocusReason && popup && popup->parent() == this;
        if (!isOwnMenu) mNode.End(host::kEditEnd_Committed);
    }

private:
    TextEditImpl& mNode;
};

}  // namespace

QWidget* TextEditImpl::CreateWidget(QWidget& parent) {
    auto* field = new TextField(*this, &parent);
    field->setText(mText);
    return field;
}

QLineEdit* TextEditImpl::Field() const {
    return static_cast<QLineEdit*>(mWidget.data());
}

void TextEditImpl::ApplyToWidget() {
    ControlImpl::ApplyToWidget();
    Field()->setFont(GetTextFont(double(mFontSize), false).mFont);
    Field()->setAccessibleName(mAccessibleName);
    Field()->setSelection(mFirstSelected, mCountSelected);
}

void TextEditImpl::DropField() {
    if (!mWidget) return;
    mText = Field()->text();
    mWidget->hide();
    mWidget->deleteLater();
    mWidget = nullptr;
}

void TextEditImpl::End(int sessionEnd) {
    if (!std::exchange(mIsInSession, false)) return;
    const host::RefPtr<host::UI_TextEdit> edit(static_cast<host::UI_TextEdit*>(mNode));
    mText = Field()->text();
    if (const auto close = std::exchange(mClose, {})) close();
    GetServices().mMainThread->Post([this, edit, sessionEnd] { Call(mEnded, *edit, sessionEnd); });
}

}  // namespace desk

namespace host {

namespace {
desk::TextEditImpl& ImplOf(const UI_TextEdit& edit) {
    return desk::TextEditImpl::Of(edit);
}
}  // namespace

UI_TextEdit::UI_TextEdit() : UI_ControlView(std::make_unique<desk::TextEditImpl>()) {}
UI_TextEdit::~UI_TextEdit() = default;

UTF16String UI_TextEdit::GetValue() const {
    const desk::TextEditImpl& impl = ImplOf(*this);
    return desk::ToUTF16(impl.mWidget ? impl.Field()->text() : impl.mText);
}

void UI_TextEdit::SetValue(const UTF16String& value) {
    desk::TextEditImpl& impl = ImplOf(*this);
    impl.mText = desk::ToQString(value);
    if (impl.mWidget) impl.Field()->setText(impl.mText);
    SelectPart(0, value.size());
}

void UI_TextEdit::SelectPart(std::size_t first, std::size_t count) {
    desk::TextEditImpl& impl = ImplOf(*this);
    const std::size_t size = GetValue().size();
    impl.mFirstSelected = int(std::min(first, size));
    impl.mCountSelected = int(std::min(count, size - std::min(first, size)));
    if (impl.mWidget) impl.Field()->setSelection(impl.mFirstSelected, impl.mCountSelected);
}

void UI_TextEdit::SetFontSize(float size) {
    ImplOf(*this).mFontSize = size;
    if (ImplOf(*this).mWidget) ImplOf(*this).ApplyToWidget();
}

void UI_TextEdit::SetAccessibleName(const UTF16String& name) {
    ImplOf(*this).mAccessibleName = desk::ToDisplayText(name);
    if (ImplOf(*this).mWidget) ImplOf(*this).Field()->setAccessibleName(ImplOf(*this).mAccessibleName);
}

void UI_TextEdit::NotifyWhenEditEnds(SharedFunction<void(UI_TextEdit& edit, int sessionEnd)> function) {
    ImplOf(*this).mEnded = std::move(function);
}

}  // namespace host
