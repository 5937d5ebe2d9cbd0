#pragma once
// The debug log of run control: written only when the program was started with a debug
// variable (NUVREL_DEBUG_...), for headless verification. It describes outcomes by their
// kind; personal text (the query, a message's recipient and body, an error's wording that is
// not one of the program's own texts) is replaced by maskedField.

#include <string>
#include <string_view>

#include "core/app_language.h"
#include "core/pipeline_outcome.h"

namespace nuvrel::app {

// The tag of the debug log's lines.
inline constexpr std::string_view debugTag = "[nuvrel-debug] ";

// True when a variable whose name begins with NUVREL_DEBUG_ is set in `environment`, a
// null-terminated "NAME=value" list such as environ.
bool anyDebugVariableSet(const char* const* environment);

// What stands in a log line for personal text: its length in characters, never the text.
std::string maskedField(std::string_view text);

// One line about an outcome, with every personal field masked. Error messages that are a text
// of `language`'s LocalizedStrings are named by their field.
std::string describeOutcome(const core::PipelineOutcome& outcome, core::AppLanguage language);

}  // namespace nuvrel::app
