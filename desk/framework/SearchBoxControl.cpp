#include <QAbstractItemView>
#include <QAction>
#include <QIconEngine>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <functional>

#include "desk/core/language/Localized.h"
#include "desk/core/names/QtStrings.h"
#include "desk/framework/ControlViewImpl.h"
#include "desk/toolkit/PictureImpl.h"
#include "desk/toolkit/Theme.h"

namespace desk {
namespace {

/// A picture of the theme as an icon: sharp at any scale, and the current theme's whenever it is painted.
class ThemeIconEngine : public QIconEngine {
public:
    explicit ThemeIconEngine(std::string name) : mName(std::move(name)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        PaintThemePicture(*painter, mName, rect, mode != QIcon::Disabled);
    }
    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State, qreal scale) override {
        const qreal side = std::min(size.width(), size.height()) / scale;
        return Theme::Picture(mName, side, scale, mode != QIcon::Disabled);
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return scaledPixmap(size, mode, state, 1);
    }
    QIconEngine* clone() const override { return new ThemeIconEngine(mName); }

private:
    std::string mName;
};

QIcon ThemeIcon(const char* name) {
    return QIcon(new ThemeIconEngine(name));
}

class SearchField : public QLineEdit {
public:
    /// The user has gone down to the list.
    std::function<void()> mLeft;

    explicit SearchField(QWidget* parent) : QLineEdit(parent) {
        addAction(ThemeIcon("search"), LeadingPosition)->setText(Localized("$$$/Desk/Commands/Find=Find"));
        const QString clearText = Localized("$$$/Desk/SearchBox/Clear=Clear");
        QAction* clearAction = addAction(ThemeIcon("clear"), TrailingPosition);
        clearAction->setText(clearText);
        clearAction->setVisible(false);
        connect(clearAction, &QAction::triggered, this, [this] {
            clear();
            setFocus();
        });
        parent->installEventFilter(this);
        connect(this, &QLineEdit::textChanged, clearAction,
                [clearAction](const QString& text) { clearAction->setVisible(!text.isEmpty()); });
    }

protected:
    bool event(QEvent* event) override {
        if (event->type() == QEvent::ShortcutOverride &&
            static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape && !text().isEmpty()) {
            event->accept();
            return true;
        }
        return QLineEdit::event(event);
    }

    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Escape && !text().isEmpty())
            clear();
        else if (event->key() != Qt::Key_Down || !FocusList())
            QLineEdit::keyPressEvent(event);
        else if (mLeft)
            mLeft();
    }

    /// What the parent gets has been left by its child that has the keyboard.
    bool eventFilter(QObject*, QEvent* event) override {
        const bool isPress = event->type() == QEvent::KeyPress;
        if (text().isEmpty() || !(isPress || event->type() == QEvent::ShortcutOverride)) return false;
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (key.key() != Qt::Key_Escape || key.modifiers() != Qt::NoModifier) return false;
        event->accept();
        if (isPress) {
            clear();
            FocusList();
        }
        return true;
    }

private:
    /// Hands the keyboard to the list or tree that is shown beside the field.
    bool FocusList() {
        for (QAbstractItemView* list : parentWidget()->findChildren<QAbstractItemView*>())
            if (list->isVisible() && list->isEnabled()) {
                list->setFocus(Qt::TabFocusReason);
                return true;
            }
        return false;
    }
};

host::StationID MakeStationID() {
    static unsigned sCount = 0;
    return host::StationID("host.searchbox." + std::to_string(++sCount));
}

struct SearchBoxImpl : host::ControlView::Impl {
    SearchField* Field() const { return static_cast<SearchField*>(mWidget.data()); }

    void SetToolTip(const QString& text) override {
        Impl::SetToolTip(text);
        Field()->setPlaceholderText(text);
    }

    /// Announces a change if the text is another than at the last announcement.
    void Announce() {
        if (!mWidget || Field()->text() == mAnnounced) return;
        mAnnounced = Field()->text();
        host::BroadcastMessage(mStationID, host::ValueChangedMessage());
    }

    const host::StationID mStationID = MakeStationID();
    unsigned mCookie = 0;
    QString mAnnounced;
};

SearchBoxImpl& Of(host::ControlView::Impl& impl) {
    return static_cast<SearchBoxImpl&>(impl);
}

}  // namespace
}  // namespace desk

namespace host {

SearchBoxControl::SearchBoxControl() : ControlView(std::make_unique<desk::SearchBoxImpl>()) {}

SearchBoxControl::~SearchBoxControl() = default;

void SearchBoxControl::Create(View& parent, const Rect& bounds, bool liveUpdate) {
    if (IsCreated() || !parent.IsCreated()) return;
    desk::SearchBoxImpl& impl = desk::Of(GetImpl());
    auto* field = new desk::SearchField(parent.GetImpl().mWidget);
    field->setObjectName(QStringLiteral("search"));
    impl.mAnnounced.clear();
    QObject::connect(field, &QLineEdit::textChanged, field, [&impl, liveUpdate](const QString& text) {
        if (liveUpdate || text.isEmpty()) impl.Announce();
    });
    field->mLeft = [&impl] { BroadcastMessage(impl.mStationID, SearchBoxLeftMessage()); };
    QObject::connect(field, &QLineEdit::returnPressed, field, [&impl] { impl.Announce(); });
    impl.Place(*field, parent, bounds);
}

UTF16String SearchBoxControl::GetText() const {
    const desk::SearchField* field = desk::Of(GetImpl()).Field();
    return field ? desk::ToUTF16(field->text()) : UTF16String();
}

void SearchBoxControl::SetText(const UTF16String& text) {
    desk::SearchBoxImpl& impl = desk::Of(GetImpl());
    if (!impl.mWidget) return;
    impl.Field()->setText(desk::ToQString(text));
    impl.Announce();
}

void SearchBoxControl::SetCookie(unsigned cookie) {
    desk::Of(GetImpl()).mCookie = cookie;
}

unsigned SearchBoxControl::GetCookie() const {
    return desk::Of(GetImpl()).mCookie;
}

const StationID& SearchBoxControl::GetStationID() const {
    return desk::Of(GetImpl()).mStationID;
}

bool SearchBoxControl::TakeFocus() {
    desk::SearchField* field = desk::Of(GetImpl()).Field();
    if (!field || !field->isEnabled()) return false;
    field->setFocus(Qt::ShortcutFocusReason);
    field->selectAll();
    return true;
}

}  // namespace host
