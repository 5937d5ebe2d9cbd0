#pragma once
// The eight fixed system commands, recognised only as whole phrases in four languages:
// "sleep" matches, "sleep timer" does not.

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "core/system_command.h"

namespace nuvrel::desktop::SystemCommandFastPath {

struct Row {
    core::SystemCommand command;
    std::span<const std::string_view> phrases;
};

// One row per command, in command order, the phrases as a user types them.
std::span<const Row> table();
// Every phrase in the pipeline's normal form, to its command; built on first use. Of two
// phrases that normalise alike, the later wins.
const std::unordered_map<std::string, core::SystemCommand>& normalizedTable();

// The command that the whole query names. Pure; microseconds.
std::optional<core::SystemCommand> match(std::string_view query);

}  // namespace nuvrel::desktop::SystemCommandFastPath
