#pragma once

#include "host/core/Export.h"

namespace host {

/// The flags of modifier keys.
inline constexpr unsigned kModKey_Alt = 16;

/// The key values of the host's key table, which is a resource of the host and the user's choice: which keys
/// carry them is nobody else's to know. A view hears of keys in the table, pressed without a modifier. The
/// first two are those of Return and the keypad's Enter, where the user has not chosen that these open.
inline constexpr int kKey_Return = 4;
inline constexpr int kKey_Enter = 5;
inline constexpr int kKey_Escape = 27;

/// The modifier keys of the user's input that is being handled. A key that stands for another one with a
/// modifier has that: `*` in a tree is the right arrow with Alt. UI thread.
ZUHOST_API unsigned GetCurrentModKeys();

/// A key that the user has pressed.
class UI_KeyboardEvent {
public:
    /// `code` is of the host's key table, `modKeys` a combination of flags such as `kModKey_Alt`.
    UI_KeyboardEvent(int code, unsigned modKeys) : mCode(code), mModKeys(modKeys) {}
    /// The key.
    int GetCode() const { return mCode; }
    /// The modifier keys that were down with it.
    unsigned GetModKey() const { return mModKeys; }

private:
    int mCode;
    unsigned mModKeys;
};

}  // namespace host
