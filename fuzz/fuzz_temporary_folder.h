#pragma once
// A folder of the fuzz run's own, for targets that read files: removed by tools/fuzz.sh with
// the rest of the run's scratch space, never a user's folder.

#include <cstdlib>
#include <filesystem>
#include <string>

namespace nuvrel::fuzz {

inline std::filesystem::path temporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "nuvrel-fuzz-XXXXXX").string();
    const char* made = ::mkdtemp(pattern.data());
    if (made == nullptr) std::abort();
    return made;
}

}  // namespace nuvrel::fuzz
