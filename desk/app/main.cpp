#include "desk/app/Program.h"

int main(int argumentCount, char** arguments) {
    return desk::RunProgram(argumentCount, arguments);
}
