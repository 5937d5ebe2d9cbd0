#pragma once
// Requests to delete one file by name: "delete report.pdf on the desktop", "바탕화면의
// 보고서.pdf 삭제해줘". Only recognises; deleting waits for the user's confirmation. Pure.

#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::desktop::DeleteFileFastPath {

struct Candidate {
    std::string name;
    // "desktop", or nothing for anywhere in the home folder.
    std::optional<std::string> location;

    bool operator==(const Candidate&) const = default;
};

std::optional<Candidate> match(std::string_view query);

}  // namespace nuvrel::desktop::DeleteFileFastPath
