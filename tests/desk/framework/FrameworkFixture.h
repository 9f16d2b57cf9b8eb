#pragma once

#include <QApplication>
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

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

/// Answers a set of commands, and notes what it is asked to carry out.
struct Answers {
    Answers(std::string name, Events& events) : mName(std::move(name)), mEvents(events) {}

    bool Status(int id, bool& enabled) const {
        const auto found = mCommands.find(id);
        if (found != mCommands.end()) enabled = found->second;
        return found != mCommands.end();
    }
    bool Obey(int id) const {
        mEvents.push_back(mName + ' ' + std::to_string(id));
        return mCommands.contains(id);
    }

    std::string mName;
    Events& mEvents;
    /// Whether enabled, by ID.
    std::map<int, bool> mCommands;
};

inline std::string ToText(const host::Rect& r) {
    return QString::asprintf("%d,%d %dx%d", r.x, r.y, r.width, r.height).toStdString();
}

/// A view that notes what is called on it.
template <class Base>
class NotingView : public Base {
public:
    NotingView(std::string name, host::Commander* parent, Events& events)
        : Base(parent), mAnswers(std::move(name), events) {}

    bool FindCommandStatus(int id, bool& enabled, bool& checked, host::MenuMark& mark,
                           host::UTF16String& text) override {
        return mAnswers.Status(id, enabled) || Base::FindCommandStatus(id, enabled, checked, mark, text);
    }
    bool ObeyCommand(const host::Command& command) override {
        return mAnswers.Obey(command.GetID()) || Base::ObeyCommand(command);
    }

    Answers mAnswers;
    std::function<void()> mWhenCreated;
    std::function<void()> mWhenOnDuty;

protected:
    void FinishCreateSelf(const host::Rect& bounds) override {
        Note("created " + ToText(bounds));
        Base::FinishCreateSelf(bounds);
        if (mWhenCreated) mWhenCreated();
    }
    void SetBoundsSelf(const host::Rect& bounds) override { Note("laid out " + ToText(bounds)); }
    void NowOnDuty() override {
        Note("on duty");
        if (mWhenOnDuty) mWhenOnDuty();
    }
    void DestroySelf() override {
        Note(this->IsCreated() ? "destroyed" : "destroyed too late");
        Base::DestroySelf();
    }

private:
    void Note(const std::string& event) { mAnswers.mEvents.push_back(mAnswers.mName + ' ' + event); }
};

using NotingTabView = NotingView<host::TabView>;
using NotingSubView = NotingView<host::SubView>;

/// A handler whose commands end, as those of panels do, at the base.
class NotingHandler : public host::Handler {
public:
    NotingHandler(const host::UTF16String& id, Events& events)
        : Handler(u"", id), mAnswers("handler", events) {}

    bool ObeyCommand(const host::Command& command) override {
        return mAnswers.Obey(command.GetID()) || Handler::ObeyCommand(command);
    }
    host::TabView* CreateTabViewSelf(host::WorkspaceFrame*) override { return nullptr; }

    Answers mAnswers;
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
    /// The program carries out a command from now on, and notes it as `event`.
    void Obey(int command, const std::string& event) {
        desk::MainCommander::Instance().Register(command, {},
                                                 [this, event] { return mEvents.push_back(event), true; });
    }
    void OpenPanel() { host::TabView::Create(mPanel.get(), kHandlerID, u"Panel", mFrame.get(), true); }
    QWidget& PanelWidget() { return *mPanel->GetImpl().mWidget; }

    Events mEvents;
    std::unique_ptr<TestPanelFrame> mFrame = std::make_unique<TestPanelFrame>(QSize(400, 300));
    std::unique_ptr<NotingTabView> mPanel =
        std::make_unique<NotingTabView>("panel", host::Application::Instance()->GetMainCommander(), mEvents);
};
