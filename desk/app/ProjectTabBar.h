#pragma once

#include <QTabBar>

namespace desk {

/// The tabs of the open projects: titles can stand in italics, the middle button closes. UI thread.
class ProjectTabBar : public QTabBar {
public:
    explicit ProjectTabBar(QWidget* parent);

    void SetItalic(int index, bool isItalic);
    bool IsItalic(int index) const { return tabData(index).toBool(); }

protected:
    void initStyleOption(QStyleOptionTab* option, int index) const override;
    QSize tabSizeHint(int index) const override;
    QSize minimumTabSizeHint(int index) const override;
    void paintEvent(QPaintEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void tabInserted(int index) override;

private:
    bool mIsPainting = false;
};

}  // namespace desk
