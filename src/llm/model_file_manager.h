#pragma once
// The file operations that installing and removing a model file needs, injected so that tests
// can make any step fail. Each operation throws a std::exception whose what() is the
// platform's description of the failure (std::filesystem::filesystem_error in the live form).

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "llm/model_resolution.h"

namespace nuvrel::llm {

struct ModelFileManager {
    FileExistsFn fileExists;
    // Creates the folder and any missing parents; an existing folder is fine.
    std::function<void(const std::filesystem::path&)> createDirectories;
    // Copies a file to a path where nothing is.
    std::function<void(const std::filesystem::path& from, const std::filesystem::path& to)>
        copyFile;
    // Renames within one folder.
    std::function<void(const std::filesystem::path& from, const std::filesystem::path& to)>
        moveFile;
    // Deletes one file; a missing file is a failure.
    std::function<void(const std::filesystem::path&)> removeFile;
};

// std::filesystem on the real disk.
ModelFileManager liveModelFileManager();

// The names of the entries of a folder; nothing for a folder that cannot be read.
using ListContentsFn = std::function<std::vector<std::string>(const std::filesystem::path&)>;
std::vector<std::string> liveListContents(const std::filesystem::path& directory);

}  // namespace nuvrel::llm
