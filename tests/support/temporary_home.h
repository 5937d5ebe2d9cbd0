#pragma once
// A fresh folder that stands in for the user's home for one test: HOME and the XDG variables
// point into it while the object lives, and it is removed afterwards.

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace nuvrel::test {

class TemporaryHome {
public:
    TemporaryHome();
    ~TemporaryHome();
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
    std::map<std::string, std::optional<std::string>> saved_;
};

}  // namespace nuvrel::test
