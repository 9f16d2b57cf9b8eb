#pragma once

#include <cstdint>

#include "host/core/Export.h"
#include "host/core/Messaging.h"
#include "host/core/Strings.h"

namespace desk {

/// Something that the user is told without being asked anything: the status bar shows it for some time.
/// Announced on `kStation_UserNotices`.
class ZUHOST_API UserNoticeMessage : public host::MessageTemplate<UserNoticeMessage> {
public:
    explicit UserNoticeMessage(host::UTF16String text);
    ~UserNoticeMessage() override;
    /// Localised; names in it are raw and are to be escaped.
    const host::UTF16String& GetText() const { return mText; }

private:
    host::UTF16String mText;
};

inline const host::StationID kStation_UserNotices{"desk.usernotices"};

/// Tells the user `text` (localised), and writes it to the log. Any thread.
ZUHOST_API void TellUser(const host::UTF16String& text);

/// How often this thread has told the user something: who has only a general sentence can see whether what it
/// called has told a better one. Any thread.
ZUHOST_API std::uint64_t CountNotices();

}  // namespace desk
