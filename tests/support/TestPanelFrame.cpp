#include "tests/support/TestPanelFrame.h"

#include <QApplication>
#include <QVBoxLayout>

TestPanelFrame::TestPanelFrame(QSize size) {
    auto* layout = new QVBoxLayout(&mWindow);
    layout->setContentsMargins(0, 0, 0, 0);
    mWindow.resize(size);
}

void TestPanelFrame::Activate() {
    mWindow.show();
    QApplication::setActiveWindow(&mWindow);
}

void TestPanelFrame::Resize(QSize size) {
    mWindow.resize(size);
    mWindow.layout()->activate();
}

void TestPanelFrame::Attach(host::TabView& view, QWidget& widget, const host::UTF16String&) {
    mView = &view;
    mWidget = &widget;
    mWindow.layout()->addWidget(&widget);
    mWindow.show();
    mWindow.layout()->activate();
}

void TestPanelFrame::Detach() {
    mWidget->setParent(nullptr);
    mWidget = nullptr;
    mView = nullptr;
    mWindow.hide();
}

void TestPanelFrame::BringToFront(bool takeFocus, bool) {
    mWindow.show();
    if (takeFocus) Activate();
}
