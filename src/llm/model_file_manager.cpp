#include "llm/model_file_manager.h"

#include <system_error>

namespace nuvrel::llm {

ModelFileManager liveModelFileManager() {
    namespace fs = std::filesystem;
    return ModelFileManager{
        .fileExists = liveFileExists,
        .createDirectories = [](const fs::path& path) { fs::create_directories(path); },
        .copyFile = [](const fs::path& from, const fs::path& to) { fs::copy_file(from, to); },
        .moveFile = [](const fs::path& from, const fs::path& to) { fs::rename(from, to); },
        .removeFile =
            [](const fs::path& path) {
                if (!fs::remove(path)) {
                    throw fs::filesystem_error(
                        "cannot remove", path,
                        std::make_error_code(std::errc::no_such_file_or_directory));
                }
            },
    };
}

std::vector<std::string> liveListContents(const std::filesystem::path& directory) {
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator it(directory, error), end; !error && it != end;
         it.increment(error)) {
        names.push_back(it->path().filename().string());
    }
    return names;
}

}  // namespace nuvrel::llm
