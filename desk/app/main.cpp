#include <malloc.h>

#include "desk/app/Program.h"

namespace {

/// The C library gives each thread an arena of its own, up to eight a processor, and each keeps what the
/// largest listing took there: a production that is polled grew by the minute. Workers wait more than they
/// allocate.
void ShareArenas() {
    constexpr int kArenas = 2;
    ::mallopt(M_ARENA_MAX, kArenas);
}

}  // namespace

int main(int argumentCount, char** arguments) {
    ShareArenas();
    return desk::RunProgram(argumentCount, arguments);
}
