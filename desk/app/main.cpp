#include "desk/app/Program.h"
#include "desk/core/work/Arenas.h"

int main(int argumentCount, char** arguments) {
    desk::ShareArenas();
    return desk::RunProgram(argumentCount, arguments);
}
