#include "desk/core/work/AskVolume.h"

#include "desk/core/work/LongWork.h"
#include "desk/core/work/WorkProgress.h"

namespace desk {

namespace {

/// Most answers come before the user would see anything.
constexpr std::chrono::milliseconds kUnnoticed(20);

}  // namespace

void WaitForAnswer(const host::UTF16String& title, const char* operation, const host::UTF16String& path,
                   const std::function<bool(std::chrono::milliseconds)>& isAnswered) {
    if (isAnswered(kUnnoticed)) return;
    RunLongWork(title, [&](WorkProgress& progress) {
        progress.SetItem(path);
        const std::string bytes = host::UTF16to8(path);
        while (!isAnswered(kUnnoticed)) progress.ThrowIfCancelled(operation, bytes);
        // An answer that comes together with a cancel comes too late.
        progress.ThrowIfCancelled(operation, bytes);
    });
}

}  // namespace desk
