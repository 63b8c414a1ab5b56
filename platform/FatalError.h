#pragma once

#include <functional>
#include <string_view>

namespace companion {

/// Ends the process: runs the registered last wish, writes `what` to standard error, aborts. Any thread.
///
/// While one thread dies, others that fail wait for it.
///
/// For what cannot happen by the program's own logic; what the world may do is a returned value instead.
[[noreturn]] void fatalError(std::string_view what);

/// Sets what is done on the way down (a held mouse button is released, the line goes to the system log as well).
/// It runs on the failing thread, so it may touch nothing that needs another one. Main
/// thread, while no other thread can fail.
void setLastWish(std::function<void(std::string_view what)> lastWish);

/// Makes an exception that nobody catches, in whichever thread, a fatal error like any other. Once, at start-up.
void makeUncaughtExceptionsFatal();

} // namespace companion
