#pragma once
// The command-line front end: drives AppState on the main queue like the panel does, and
// prints each settled outcome as card text or JSON.

#include <atomic>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>

#include "app/app_state.h"
#include "base/main_queue.h"

namespace nuvrel::app {

enum ExitStatus : int { exitResult = 0, exitError = 1, exitUsage = 2, exitCancelled = 130 };

class TerminalSession {
public:
    TerminalSession(base::MainQueue& queue, std::shared_ptr<AppState> state, std::ostream& out,
                    bool json);

    // Runs one sentence to its end and prints it. Runs on the main thread.
    int ask(std::string_view sentence);
    // Answers each line of `in` until its end or a quit; prompts when `prompt` is set.
    int interactive(std::istream& in, bool prompt);

    // Ctrl-C, delivered on the main thread: cancels a running sentence; with none running,
    // or at the second press, quits.
    void interrupt();
    // SIGTERM, on the main thread: cancels a running sentence and quits.
    void terminate();
    // True while blocked reading a line; safe to ask from any thread.
    bool isReadingInput() const { return readingInput_; }

    // Asked when the local model could not be reached: true when no model file is installed,
    // and the card then gets one more line that says how to install one.
    std::function<bool()> noModelInstalled;

private:
    int printSettled();

    base::MainQueue& queue_;
    std::shared_ptr<AppState> state_;
    std::ostream& out_;
    const bool json_;
    bool running_ = false;
    bool cancelRequested_ = false;
    bool quitRequested_ = false;
    std::atomic<bool> readingInput_{false};
};

}  // namespace nuvrel::app
