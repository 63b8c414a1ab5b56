#pragma once

#include "platform/HttpSession.h"
#include "platform/Log.h"

#include <memory>

namespace companion {

/// Loads the module that is linked with libcurl, at the first call, and makes a session of it. Fatal error if the module
/// is not where it was installed to. The log must outlive the session.
std::unique_ptr<HttpSession> httpSessionOfModule(SystemLog& log);

} // namespace companion
