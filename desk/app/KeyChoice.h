#pragma once

#include <string>

namespace desk {

class Profile;

/// The user's choice of a key table: two commands of the Edit menu, remembered in the profile. UI thread.
class KeyChoice {
public:
    static constexpr char kFileName[] = "Keyboard.json";

    /// Takes the choice that was remembered; the profile outlives this.
    explicit KeyChoice(const Profile& profile);
    ~KeyChoice();
    KeyChoice(const KeyChoice&) = delete;
    KeyChoice& operator=(const KeyChoice&) = delete;

private:
    void Choose(const std::string& table) const;

    const Profile& mProfile;
    bool mMayWrite = true;
};

}  // namespace desk
