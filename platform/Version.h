#pragma once

#include <string>

namespace companion {

/// "0.1.0 (3af0b01c14e2)": the version, and the commit that the program was built from where that is known.
std::string versionText();

} // namespace companion
