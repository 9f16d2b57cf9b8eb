#pragma once

#include "desk/framework/MainCommander.h"
#include "desk/framework/PanelNavigation.h"
#include "desk/framework/ViewImpl.h"
#include "host/framework/Application.h"
#include "host/framework/ControlView.h"
#include "host/framework/Handler.h"
#include "host/framework/TabView.h"
#include "tests/support/HostFixture.h"
#include "tests/support/TestPanelFrame.h"

/// What has happened, in its order.
using Events = std::vector<std::string>;

inline std::string ToText(const host::Rect& r) {
    return QString::asprintf("%d,%d %dx%d", r.x, r.y, r.width, r.height).toStdString();
}

/// Answers the commands of a set, and notes what it is asked to carry out. What it does not answer ends, as
/// with panels, at the base.
template <class Base>
class Noting : public Base {
public:
    template <class... Arguments>
    Noting(std::string name, Events& events, Arguments&&... arguments)
        : Base(std::forward<Arguments>(arguments)...), mName(std::move(name)), mEvents(events) {}

    bool FindCommandStatus(int id, bool& enabled, bool& checked, host::MenuMark& mark,
                           host::UTF16String& text) override {
        const auto found = mCommands.find(id);
        if (found == mCommands.end()) return Base::FindCommandStatus(id, enabled, checked, mark, text);
        enabled = found->second;
        return true;
    }
    host::UTF16String DescribeWhyDisabled(int id) override {
        const auto found = mCommands.find(id);
        return found == mCommands.end() || found->second ? host::UTF16String() : u"not now";
    }
    bool ObeyCommand(const host::Command& command) override {
        Note(std::to_string(command.GetID()));
        return mCommands.contains(command.GetID()) || Base::ObeyCommand(command);
    }

    /// Whether enabled, by ID.
    std::map<int, bool> mCommands;

protected:
    void Note(const std::string& event) { mEvents.push_back(mName + ' ' + event); }

private:
    std::string mName;
    Events& mEvents;
};

/// A view that notes what is called on it.
template <class Base>
class NotingView : public Noting<Base> {
public:
    using Noting<Base>::Noting;

    std::function<void()> mWhenCreated;
    std::function<void()> mWhenOnDuty;

protected:
    void FinishCreateSelf(const host::Rect& bounds) override {
        this->Note("created " + ToText(bounds));
        Base::FinishCreateSelf(bounds);
        if (mWhenCreated) mWhenCreated();
    }
    void NowOnDuty() override {
        this->Note("on duty");
        if (mWhenOnDuty) mWhenOnDuty();
    }
    void DestroySelf() override {
        this->Note(this->IsCreated() ? "destroyed" : "destroyed too late");
        Base::DestroySelf();
    }
};

using NotingTabView = NotingView<host::TabView>;
using NotingSubView = NotingView<host::SubView>;

class NotingHandler : public Noting<host::Handler> {
public:
    NotingHandler(const host::UTF16String& id, Events& events) : Noting("handler", events, u"", id) {}
    host::TabView* CreateTabViewSelf(host::WorkspaceFrame*) override { return nullptr; }
};

/// The tips that a widget is to show in its status line.
class StatusTips : public QObject {
public:
    explicit StatusTips(QObject* heard) { heard->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::StatusTip) mTips << static_cast<QStatusTipEvent*>(event)->tip();
        return false;
    }
    QStringList mTips;
};

/// One panel in a window of its own.
class FrameworkFixture : public HostFixture {
protected:
    static constexpr char16_t kHandlerID[] = u"test.handler";

    ~FrameworkFixture() override {
        if (mPanel) mPanel->Destroy();
        desk::PanelNavigation::Instance() = {};
        mMain.RunUntilIdle();
    }

    /// What has happened since the last call.
    Events TakeEvents() { return std::exchange(mEvents, {}); }
    void OpenPanel() { host::TabView::Create(mPanel.get(), kHandlerID, u"Panel", mFrame.get(), true); }
    QWidget& PanelWidget() { return *mPanel->GetImpl().mWidget; }

    Events mEvents;
    std::unique_ptr<TestPanelFrame> mFrame = std::make_unique<TestPanelFrame>(QSize(400, 300));
    std::unique_ptr<NotingTabView> mPanel =
        std::make_unique<NotingTabView>("panel", mEvents, host::Application::Instance()->GetMainCommander());
};
