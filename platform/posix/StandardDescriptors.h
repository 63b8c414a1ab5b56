#pragma once

namespace companion {

/// Opens /dev/null for reading in place of standard input, output and error where they are closed. Otherwise a file or
/// socket that the program opens later would get such a number, and with it whatever is printed. Writing to the
/// placeholders fails, as writing to a closed descriptor would. Call it first in main.
void openStandardDescriptors();

} // namespace companion
