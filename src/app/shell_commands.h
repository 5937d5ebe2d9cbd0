#pragma once
// `nuvrel explain` and `nuvrel diagnostics`: the two verbs that report on the program without
// running a sentence.

#include <chrono>
#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "app/app_state.h"
#include "app/diagnostics_report.h"
#include "app/network_activity_log.h"
#include "base/http.h"
#include "core/localized_strings.h"

namespace nuvrel::app {

// Which step would claim the sentence, from a pipeline made as `ask` makes it; nothing is
// carried out. Plain: "3 CalculatorFastPath {...}"; JSON: the claim's object.
int runExplainCommand(const std::string& sentence, bool json, core::AppLanguage language,
                      const AppState::MakePipeline& makePipeline, std::ostream& out);

// The probes of this machine. `session` reaches the local servers only.
DiagnosticsReport::Probes liveDiagnosticsProbes(std::string appVersion,
                                                std::shared_ptr<base::HttpSession> session,
                                                std::shared_ptr<const NetworkActivityLog> log);

// Puts the text on the clipboard with the first of wl-copy (Wayland), xclip and xsel (X11)
// that the session can use; false when none could.
bool liveCopyToClipboard(const std::string& text);

}  // namespace nuvrel::app

namespace nuvrel::app {

struct CommandLine;

// settings, key and diagnostics on this machine, printing to standard output and error;
// nothing for another verb.
std::optional<int> runLiveShellCommand(const CommandLine& command, const char* const* environment,
                                       const std::string& appVersion);

}  // namespace nuvrel::app
