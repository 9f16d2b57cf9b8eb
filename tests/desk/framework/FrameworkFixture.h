#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "desk/core/Services.h"
#include "desk/files/PosixFileSystem.h"
#include "desk/framework/MainCommander.h"
#include "desk/framework/PanelNavigation.h"
#include "desk/framework/ViewImpl.h"
#include "host/framework/Application.h"
#include "host/framework/ControlView.h"
#include "host/framework/Handler.h"
#include "host/framework/TabView.h"
#include "tests/support/LogExpectation.h"
#include "tests/support/ManualMainThread.h"
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
    return std::to_string(r.x) + ',' + std::to_string(r.y) + ' ' + std::to_string(r.width) + 'x' +
           std::to_string(r.height);
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
        switch (command.GetID()) {
            case 11311:
                if (OnSelectFindBox()) return true;
                break;
            case 11916:
                if (OnSelectNextPanel()) return true;
                break;
            default:
                break;
        }
        return mAnswers.Obey(command.GetID()) || Handler::ObeyCommand(command);
    }
    host::TabView* CreateTabViewSelf(host::WorkspaceFrame*) override { return nullptr; }

    Answers mAnswers;
};

/// One panel in a window of its own.
class FrameworkFixture : public testing::Test {
protected:
    static constexpr char16_t kHandlerID[] = u"test.handler";

    FrameworkFixture() { desk::GetServices().mFileSystem = &mDisk; }
    ~FrameworkFixture() override {
        if (mPanel) mPanel->Destroy();
        desk::PanelNavigation::Instance() = {};
        mMain.RunUntilIdle();
        desk::GetServices().mFileSystem = mFileSystemBefore;
    }

    void OpenPanel() { host::TabView::Create(mPanel.get(), kHandlerID, u"Panel", mFrame.get(), true); }
    QWidget& PanelWidget() { return *mPanel->GetImpl().mWidget; }

    desk::FileSystem* mFileSystemBefore = desk::GetServices().mFileSystem;
    desk::PosixFileSystem mDisk;
    ManualMainThread mMain;
    Events mEvents;
    std::unique_ptr<TestPanelFrame> mFrame = std::make_unique<TestPanelFrame>(QSize(400, 300));
    std::unique_ptr<NotingTabView> mPanel =
        std::make_unique<NotingTabView>("panel", host::Application::Instance()->GetMainCommander(), mEvents);
};
