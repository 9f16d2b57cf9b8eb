#include "desk/core/log/UserNotice.h"

#include <utility>

#include "desk/core/log/Log.h"
#include "host/core/UserNotice.h"

namespace desk {

UserNoticeMessage::UserNoticeMessage(host::UTF16String text) : mText(std::move(text)) {}

UserNoticeMessage::~UserNoticeMessage() = default;

namespace {
thread_local std::uint64_t sNotices = 0;
}  // namespace

void TellUser(const host::UTF16String& text) {
    ++sNotices;
    Log(LogLevel::Info, host::UTF16to8(text));
    host::PostMessageToUIThread(kStation_UserNotices, std::make_shared<UserNoticeMessage>(text), false);
}

std::uint64_t CountNotices() {
    return sNotices;
}

}  // namespace desk

namespace host {

void TellInStatusBar(const UTF16String& text) {
    desk::TellUser(text);
}

}  // namespace host
