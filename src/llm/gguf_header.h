#pragma once
// Whether a file is a GGUF model as llama-server loads it: the magic "GGUF" and a format
// version it reads (2 or 3), checked before a file goes into the models folder so that a
// saved web page or a half file never becomes a "model".

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::llm {

// What is wrong with the first bytes of a file ("not GGUF (magic ...)", "GGUF version 7 is not
// supported"); nothing when they are a GGUF header.
std::optional<std::string> ggufHeaderProblem(std::string_view firstBytes);

// The same for a file on disk; a file that cannot be read is a problem too.
std::optional<std::string> ggufFileProblem(const std::filesystem::path& file);

}  // namespace nuvrel::llm
