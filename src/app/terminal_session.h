#pragma once
// The command-line front end: drives AppState on the main queue like the panel does, and
// prints each settled outcome as card text or JSON.

#include <atomic>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "app/app_state.h"
#include "base/main_queue.h"

namespace nuvrel::app {

enum ExitStatus : int {
    exitResult = 0,
    exitError = 1,
    exitUsage = 2,
    // Something asked for confirmation and was not carried out.
    exitNotConfirmed = 3,
    exitCancelled = 130,
};

// How an outcome that asks for confirmation is answered.
struct ConfirmationPolicy {
    // --yes: every row is confirmed without asking.
    bool confirmAll = false;
    // A terminal to ask on ("[y/N]" for each row); null when there is none.
    std::istream* answers = nullptr;
};

class TerminalSession {
public:
    TerminalSession(base::MainQueue& queue, std::shared_ptr<AppState> state, std::ostream& out,
                    bool json);

    // Runs one sentence to its end and prints it, then settles what it asks to confirm.
    // Runs on the main thread.
    int ask(std::string_view sentence);
    void setConfirmationPolicy(ConfirmationPolicy policy) { confirmation_ = policy; }
    // Answers each line of `in` until its end or a quit; prompts when `prompt` is set.
    int interactive(std::istream& in, bool prompt);
    // The same over lines from a reader of its own (a line editor that prompts itself);
    // nothing from it is the end of input.
    using LineSource = std::function<std::optional<std::string>()>;
    int interactive(const LineSource& nextLine);

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
    // Asks for, or takes, the user's word on each row of the outcome on show and prints what
    // each confirmed row gave. The status of the whole ask.
    int settleConfirmation(const core::PipelineOutcome& shown, int status);
    bool userSaysYes(const std::string& prompt);
    // The trimmed, lower-cased line typed after `prompt`; nothing at the end of input.
    std::optional<std::string> readAnswer(const std::string& prompt);
    // Settles whom a message draft on show goes to: one contact is taken, several are offered
    // as a numbered choice on a terminal. The status to end with when no send may follow.
    std::optional<int> chooseRecipient();

    base::MainQueue& queue_;
    std::shared_ptr<AppState> state_;
    std::ostream& out_;
    const bool json_;
    ConfirmationPolicy confirmation_{};
    bool running_ = false;
    bool cancelRequested_ = false;
    bool quitRequested_ = false;
    std::atomic<bool> readingInput_{false};
};

}  // namespace nuvrel::app
