#pragma once
// What the program knows of model files: which installed files a user can pick, what they are
// called on screen, and how a user's own GGUF file is added or removed. A file is installed
// exactly if its name is in the models folder. All operations are synchronous and touch only
// the injected file operations; the shell runs an install in a task of its own.

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/localized_strings.h"
#include "llm/model_catalog_errors.h"
#include "llm/model_file_manager.h"

namespace nuvrel::llm::ModelCatalog {

// Names ending in ".gguf" in any case, the default router file first, the rest in natural
// order ("model-2" before "model-10"). A ".gguf.part" staging file is not a model.
std::vector<std::string> installedModelFileNames(const std::filesystem::path& directory,
                                                 const ListContentsFn& listContents);
// The installed names without the interim file and the summary models, in the same order.
std::vector<std::string> selectableModelFileNames(const std::filesystem::path& directory,
                                                  const ListContentsFn& listContents);
bool isInternalOnlyFileName(std::string_view fileName);

// "Kestrune-nano 0.8B · on-device" for the default router file, else "<name without
// extension> · on-device".
std::string displayName(std::string_view fileName);
// The upstream model's plain name where one is known, else the file name as it stands.
std::string attributionName(std::string_view fileName);
// The one-line description of the curated files; nothing for any other file.
std::optional<std::string> consumerTrait(std::string_view fileName,
                                         const core::LocalizedStrings& strings);

// Copies a ".gguf" file into `directory` under its own name through "<name>.part", which is
// renamed at the end, so a crash never leaves a listed half file. Never overwrites. Returns the
// installed path; throws ModelInstallError.
std::filesystem::path install(const std::filesystem::path& sourceURL,
                              const std::filesystem::path& directory,
                              const ModelFileManager& fileManager);

// Deletes `fileName` from `directory` unless it is the selected model. Throws ModelRemoveError.
void remove(std::string_view fileName, const std::optional<std::string>& currentlySelectedFileName,
            const std::filesystem::path& directory, const ModelFileManager& fileManager);

}  // namespace nuvrel::llm::ModelCatalog
