#pragma once
// One line of standard input with the terminal's echo turned off while it is typed, so that a
// pasted key never shows on screen; input that is not a terminal is read as it is.

#include <optional>
#include <string>

namespace nuvrel::platform {

// The line without its line end; nothing at end of input.
std::optional<std::string> readSecretLine();

}  // namespace nuvrel::platform
