#pragma once

#include <functional>
#include <string_view>

namespace companion {

/// Ends the process: calls the fatal-error handler, writes `what` to standard error, aborts. Any thread. Another thread that
/// fails meanwhile waits for the end.
///
/// For what the program's own logic rules out; failures of the outside world are returned values instead.
[[noreturn]] void fatalError(std::string_view what);

/// `handler` releases a held mouse button and tells the system's log. It runs on the failing thread, so it must not need
/// another one. Main thread, while no other thread can fail.
void setFatalErrorHandler(std::function<void(std::string_view what)> handler);

/// Makes an exception that nobody catches, in whichever thread, a fatal error like any other. Once, at start-up.
void makeUncaughtExceptionsFatal();

} // namespace companion
