#pragma once

namespace desk {

/// While it lives, the input that is being handled counts as having these modifier keys too. UI thread.
class ImpliedModKeys {
public:
    explicit ImpliedModKeys(unsigned modKeys);
    ~ImpliedModKeys();
    ImpliedModKeys(const ImpliedModKeys&) = delete;
    ImpliedModKeys& operator=(const ImpliedModKeys&) = delete;

private:
    unsigned mBefore;
};

}  // namespace desk
