#pragma once

#include <memory>

#include "host/core/Export.h"
#include "host/core/Geometry.h"
#include "host/core/Messaging.h"
#include "host/core/Strings.h"
#include "host/toolkit/DataTransfer.h"
#include "host/toolkit/SharedFunction.h"

namespace host {

class Bitmap;
class View;

/// Base of the framework's controls: a widget in a view. UI thread.
class ZUHOST_API ControlView {
public:
    struct Impl;

    virtual ~ControlView();
    ControlView(const ControlView&) = delete;
    ControlView& operator=(const ControlView&) = delete;

    /// True from `Create` until `Destroy`. All other operations do nothing while it is false.
    bool IsCreated() const;
    /// Takes the control out of its parent; it can be created again.
    void Destroy();

    /// A disabled control is grey and does nothing. Enabled by default.
    void Enable(bool enable);
    bool IsEnabled() const;
    /// Shown by default.
    void Show(bool show);
    /// The rectangle in the parent, in view units.
    void SetBounds(const Rect& bounds);
    Rect GetBounds() const;
    /// Plain, localised text; also the control's name for assistive technology where it has no other.
    void SetToolTipText(const UTF16String& text);

protected:
    explicit ControlView(std::unique_ptr<Impl> impl);
    Impl& GetImpl() const { return *mImpl; }

private:
    std::unique_ptr<Impl> mImpl;
};

/// A button with a picture that sends a command when it is clicked.
class ZUHOST_API PictureButton : public ControlView {
public:
    PictureButton();
    ~PictureButton() override;

    /// Creates the button in `parent`. A click sends the command `commandID` to the commander on duty
    /// within `parent`'s chain.
    void Create(View& parent, int commandID, const Rect& bounds, const Bitmap& bitmap);

    /// Scale of the picture inside the button; 1 is its own size.
    void SetScale(float scale);

    /// Answers drags over the button: `function` is told what happens (`kDropAction_...`, the row always
    /// empty), and returns whether the drop would be welcome, or has been carried out. The drop is told later,
    /// when the drag has ended; one that comes less than 200 ms after the pointer does nothing, and the status
    /// bar says so. A null function takes drags off the button.
    void SetDragSupportFxn(SharedFunction<bool(int action, UI_DropData* data)> function);

    /// Text for the window's status bar while the pointer is over the button.
    void SetStatusBarText(const UTF16String& text);
};

/// A text field for searching, with a button that empties it. Announces `ValueChangedMessage` on its
/// station whenever the text has changed, whether by the user or by `SetText`. Down hands the keyboard to the
/// list or tree that shows beside it in the parent, and announces `SearchBoxLeftMessage` then. Escape empties
/// it, also when it comes from what stands beside it in the parent and is of no use there; the keyboard then
/// goes to the list or tree that shows.
class ZUHOST_API SearchBoxControl : public ControlView {
public:
    SearchBoxControl();
    ~SearchBoxControl() override;

    /// Creates the field in `parent`; with `liveUpdate` every key press announces a change, otherwise
    /// only Return does.
    void Create(View& parent, const Rect& bounds, bool liveUpdate);

    /// Plain text, as it was typed or set.
    UTF16String GetText() const;
    /// Announces a change, as typing does.
    void SetText(const UTF16String& text);
    /// A number that tells the field from others.
    void SetCookie(unsigned cookie);
    unsigned GetCookie() const;
    /// The station of this field; its own from construction to destruction.
    const StationID& GetStationID() const;
    /// Gives the field the keyboard and selects its text; false when it is not created or disabled.
    bool TakeFocus();
};

/// The value of a control has changed. Announced on the control's station.
class ZUHOST_API ValueChangedMessage : public MessageTemplate<ValueChangedMessage> {
public:
    ~ValueChangedMessage() override;
};

/// The user has gone down from a search field to the list beside it, which has the keyboard now. Announced on
/// the field's station.
class ZUHOST_API SearchBoxLeftMessage : public MessageTemplate<SearchBoxLeftMessage> {
public:
    ~SearchBoxLeftMessage() override;
};

}  // namespace host
