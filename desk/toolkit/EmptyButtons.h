#pragma once

#include <QWidget>
#include <vector>

#include "host/toolkit/UI_MultiColumnTree.h"

namespace desk {

/// The buttons under the text of an empty tree. UI thread.
class EmptyButtons : public QWidget {
public:
    /// `viewport` is the tree's, and owns this.
    explicit EmptyButtons(QWidget& viewport);

    void Set(const std::vector<host::UI_EmptyButton>& buttons);
    /// Shows them in the middle, from `top` on, or hides them; later, since it is called while the tree is
    /// painted.
    void FollowLater(bool isShown, int top);

private:
    void Follow();

    bool mIsShown = false;
    int mTop = 0;
    bool mIsQueued = false;
};

}  // namespace desk
