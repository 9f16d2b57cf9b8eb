#pragma once

#include <QApplication>
#include <QVBoxLayout>
#include <QWidget>
#include <string>

#include "desk/framework/PanelFrame.h"

/// A frame for one panel: a plain window of a given size that the panel's view fills, shown while it holds one.
class TestPanelFrame : public desk::PanelFrame {
public:
    explicit TestPanelFrame(QSize size = {800, 600}) {
        (new QVBoxLayout(&mWindow))->setContentsMargins(0, 0, 0, 0);
        mWindow.resize(size);
    }

    QWidget& Window() { return mWindow; }
    /// Makes the window the active one, so that widgets in it can have the keyboard focus.
    void Activate() {
        mWindow.show();
        QApplication::setActiveWindow(&mWindow);
    }
    /// Gives the view another size.
    void Resize(QSize size) {
        mWindow.resize(size);
        mWindow.layout()->activate();
    }

    host::TabView* GetView() const { return mView; }
    const host::UTF16String& GetTitle() const { return mTitle; }

    void Attach(host::TabView& view, QWidget& widget, const host::UTF16String&) override {
        mView = &view;
        mWidget = &widget;
        mWindow.layout()->addWidget(&widget);
        mWindow.show();
        mWindow.layout()->activate();
    }
    void Detach() override {
        mWidget->setParent(nullptr);
        mWidget = nullptr;
        mView = nullptr;
        mWindow.hide();
    }
    void SetTitle(const host::UTF16String& title) override { mTitle = title; }
    void Show(bool show) override { mWindow.setVisible(show); }
    void BringToFront(bool takeFocus, bool) override { takeFocus ? Activate() : mWindow.show(); }
    void UpdateStackedDimensions(bool) override {}

private:
    QWidget mWindow;
    QWidget* mWidget = nullptr;
    host::TabView* mView = nullptr;
    host::UTF16String mTitle;
};
