#pragma once

#include <string>
#include <vector>

namespace companion {

/// The URLs of files that the command line names, by paths or by URLs: another program that takes them may work in another
/// folder. Whether they exist is looked at when they are sent.
std::vector<std::string> urlsOfFiles(const std::vector<std::string>& files);

} // namespace companion
