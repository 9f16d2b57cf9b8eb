#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/core/Strings.h"

namespace desk {

/// The productions that were opened last, in "Recent Productions.json" of the profile: an object with
/// "productions", file URIs (RFC 8089) with the most recent first, and "openAtStart". Paths are bytes as the
/// kernel takes them. UI thread; touches only the file.
class RecentProductions {
public:
    static constexpr const char* kFileName = "Recent Productions.json";
    static constexpr std::size_t kLimit = 10;

    /// Reads the list. One that cannot be understood is kept aside and logged, and the list begins empty.
    explicit RecentProductions(std::string path);

    const std::vector<std::string>& Get() const { return mFolders; }
    /// What the user is told when the list could not be read, localised; mostly empty.
    const host::UTF16String& GetNotice() const { return mNotice; }
    /// True when nothing was ever opened or closed with this profile.
    bool IsFirstStart() const { return mFolders.empty() && mOpenAtStart; }
    /// The production to open when the program starts; empty when there is none or the user closed it.
    std::string GetFolderToOpen() const { return mOpenAtStart && !mFolders.empty() ? mFolders.front() : ""; }

    /// Puts a folder in front, to be opened at the next start. A list that cannot be written is logged.
    void Add(const std::string& folder);
    void Remove(const std::string& folder);
    /// The user has closed the production: nothing is opened at the next start.
    void ForgetFolderToOpen();

private:
    void Read();
    void Write() const;

    std::string mPath;
    std::vector<std::string> mFolders;
    bool mOpenAtStart = true;
    bool mMayWrite = true;
    host::UTF16String mNotice;
};

}  // namespace desk
