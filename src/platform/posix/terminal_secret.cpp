#include "platform/posix/terminal_secret.h"

#include <termios.h>
#include <unistd.h>

#include <iostream>

namespace nuvrel::platform {

std::optional<std::string> readSecretLine() {
    termios saved{};
    const bool terminal = ::isatty(STDIN_FILENO) && ::tcgetattr(STDIN_FILENO, &saved) == 0;
    if (terminal) {
        termios quiet = saved;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    std::string line;
    const bool read = static_cast<bool>(std::getline(std::cin, line));
    if (terminal) {
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
        std::cerr << '\n';  // the Return that the terminal did not echo
    }
    if (!read && line.empty()) return std::nullopt;
    return line;
}

}  // namespace nuvrel::platform
