#ifndef MARROWBENCH_SUPPORT_CONSOLE_H
#define MARROWBENCH_SUPPORT_CONSOLE_H

namespace marrowbench {

/// Flushes standard output and standard error. Called after every message, so that a console that
/// is redirected into a file shows how far a client has come.
void flushConsole();

}  // namespace marrowbench

#endif
