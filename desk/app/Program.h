#pragma once

namespace desk {

/// Runs Production Desk; returns the process's exit code: 0 for success, 1 when what was asked for could not be
/// done, 2 for a wrong command line, a folder that cannot be shown or a missing display. What is wrong stands
/// in one line on standard error.
int RunProgram(int argumentCount, char** arguments);

}  // namespace desk
