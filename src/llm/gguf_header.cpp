#include "llm/gguf_header.h"

#include <array>
#include <cstdint>
#include <fstream>

namespace nuvrel::llm {

std::optional<std::string> ggufHeaderProblem(std::string_view firstBytes) {
    if (firstBytes.size() < 8) return "too short for a GGUF header";
    if (firstBytes.substr(0, 4) != "GGUF") return "not GGUF (no \"GGUF\" magic at the start)";
    // Little-endian on disk, whatever the machine.
    std::uint32_t version = 0;
    for (int i = 3; i >= 0; --i) {
        version = (version << 8) | static_cast<unsigned char>(firstBytes[4 + i]);
    }
    if (version < 2 || version > 3) {
        return "GGUF version " + std::to_string(version) + " is not supported";
    }
    return std::nullopt;
}

std::optional<std::string> ggufFileProblem(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return "cannot be read";
    std::array<char, 8> head{};
    in.read(head.data(), head.size());
    return ggufHeaderProblem(std::string_view(head.data(), static_cast<std::size_t>(in.gcount())));
}

}  // namespace nuvrel::llm
