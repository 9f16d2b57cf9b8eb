#pragma once

#include <QString>
#include <functional>

#include "desk/core/work/Lifetime.h"
#include "desk/toolkit/ControlImpl.h"
#include "host/toolkit/UI_TextEdit.h"

class QLineEdit;

namespace desk {

/// The desktop's half of a text edit.
struct TextEditImpl final : ControlImpl {
    static TextEditImpl& Of(const host::UI_TextEdit& edit) {
        return static_cast<TextEditImpl&>(edit.GetImpl());
    }

    QWidget* CreateWidget(QWidget& parent) override;
    void ApplyToWidget() override;
    QLineEdit* Field() const;
    /// Hides the field, and deletes it once its event has been dealt with.
    void DropField();

    void Begin() { mIsInSession = true; }
    /// Ends the session, if there is one.
    void End(int sessionEnd);

    QString mText;
    int mFirstSelected = 0;
    int mCountSelected = 0;
    float mFontSize = 0;
    QString mAccessibleName;
    bool mIsInSession = false;
    host::SharedFunction<void(host::UI_TextEdit&, int)> mEnded;
    /// For whoever shows the field: a session has ended, but nobody has been told; the user has typed.
    std::function<void()> mClose;
    std::function<void()> mTyped;
};

}  // namespace desk
