#pragma once
// Which model file the router server loads: the fine-tuned router files, the general-purpose
// interim file that stands in when none is installed, and the fallback from a user's selection.
// LlamaServerManager exposes these under the same names as its static members; they live here
// so that the catalog, the settings and the manager share one set of rules.
//
// Everything here is synchronous and safe to call from any thread.

#include <array>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/diagnostics.h"

namespace nuvrel::llm {

using FileExistsFn = std::function<bool(const std::filesystem::path&)>;

inline constexpr std::string_view defaultModelFileName = "nuvrel-nano-router-v5-q4_k_m.gguf";
inline constexpr std::string_view interimModelFileName = "qwen2.5-1.5b-instruct-q4_k_m.gguf";
// The dedicated summary model files, in the summary planner's priority order; after them the
// planner tries the interim file.
inline constexpr std::array<std::string_view, 2> dedicatedSummaryModelFileNames = {
    "LFM2.5-2.6B-Q4_K_M.gguf", "Qwen3-1.7B-Q4_K_M.gguf"};

// $XDG_DATA_HOME/nuvrel/models, read from the environment at each call and created when missing,
// so that a user who wants to drop a model file in finds the folder. Every model file lives
// flat in this folder.
std::filesystem::path modelsDirectory();
std::filesystem::path defaultModelPath();
std::filesystem::path interimModelPath();

// True for the default router file and any name starting with "nuvrel-nano-router-" or
// "kestrune-mini-router-": these get the fine-tuned router prompt.
bool isCanonicalPromptRouter(std::string_view fileName);
// Every other file, the interim file and a user's own file included.
bool isInterimModel(std::string_view fileName);

struct ResolvedModelPath {
    std::filesystem::path path;
    bool isInterim = false;
    friend bool operator==(const ResolvedModelPath&, const ResolvedModelPath&) = default;
};

// The default router file when it exists (isInterim false); otherwise the interim path, whether
// it exists or not, after a "[Nuvrel] fine-tuned router model not found at ..." line.
ResolvedModelPath resolveModelPath(const FileExistsFn& fileExists,
                                   const base::Diagnostics& diagnostics = {});

// The selected file in `modelsDirectory` when it exists. An absent or empty selection falls back
// silently; a selected file that is missing falls back after a "[Nuvrel] selected model not
// found at ..." line. The fallback always looks in the real modelsDirectory(), never in the
// folder given here.
ResolvedModelPath resolveModelPath(const std::optional<std::string>& selectedFileName,
                                   const std::filesystem::path& modelsDirectory,
                                   const FileExistsFn& fileExists,
                                   const base::Diagnostics& diagnostics = {});

// Whether a file (or anything else) is at the path; the live form of fileExists.
bool liveFileExists(const std::filesystem::path& path);

}  // namespace nuvrel::llm
