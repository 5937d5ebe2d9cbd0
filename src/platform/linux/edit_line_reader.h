#pragma once
// Line editing on a terminal through libedit: arrow keys move and recall, Ctrl-R searches the
// history backwards, ~/.editrc is honoured. Only for a terminal; piped input keeps the plain
// reader.

#include <atomic>
#include <optional>
#include <string>
#include <vector>

namespace nuvrel::platform {

class EditLineReader {
public:
    // Reads standard input and draws on standard output. `history` is recalled oldest first.
    // Switches the character type to UTF-8 when the locale's is not, so that Korean, Chinese
    // and Japanese can be edited. Throws std::runtime_error when libedit cannot start.
    EditLineReader(std::string prompt, const std::vector<std::string>& history);
    ~EditLineReader();
    EditLineReader(const EditLineReader&) = delete;
    EditLineReader& operator=(const EditLineReader&) = delete;

    // The next line, without its line end, and put in the in-memory history when not blank;
    // nothing at the end of input or after interrupt(). Runs on the caller's thread.
    std::optional<std::string> readLine();
    // Ends a waiting readLine() with nothing; safe from any thread (a signal watcher's).
    void interrupt();
    // True while readLine() waits; safe to ask from any thread.
    bool isReading() const { return reading_; }

    struct State;

private:
    State* state_;
    std::atomic<bool> reading_{false};
};

}  // namespace nuvrel::platform
