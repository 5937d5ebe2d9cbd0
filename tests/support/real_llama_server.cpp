#include "support/real_llama_server.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace nuvrel::test {
namespace {

std::optional<std::string> variable(const char* name) {
    const char* value = std::getenv(name);
    if (!value || !*value) return std::nullopt;
    return std::string(value);
}

// Read before any test replaces HOME and XDG_CACHE_HOME with its temporary folder.
std::filesystem::path accountCacheHome() {
    if (auto cache = variable("XDG_CACHE_HOME")) return *cache;
    if (auto home = variable("HOME")) return std::filesystem::path(*home) / ".cache";
    if (const passwd* entry = ::getpwuid(::getuid())) {
        return std::filesystem::path(entry->pw_dir) / ".cache";
    }
    return "/nonexistent";
}

const std::filesystem::path cacheHome = accountCacheHome();
const std::optional<std::string> serverOverride = variable("NUVREL_TEST_LLAMA_SERVER");
const std::optional<std::string> modelOverride = variable("NUVREL_TEST_MODEL");

}  // namespace

std::filesystem::path realServerBinary() {
    if (serverOverride) return *serverOverride;
    return cacheHome / "nuvrel/llama-server/3.22.1/bin/llama-server";
}

std::filesystem::path tinyTestModel() {
    if (modelOverride) return *modelOverride;
    return cacheHome / "nuvrel/test-models/tiny-qwen2.gguf";
}

std::filesystem::path tinyEmbeddingTestModel() {
    return tinyTestModel().parent_path() / "tiny-qwen2-embedding.gguf";
}

::testing::AssertionResult realServerAvailable() {
    if (::access(realServerBinary().c_str(), X_OK) != 0) {
        return ::testing::AssertionFailure()
               << "no llama-server at " << realServerBinary()
               << ": run scripts/install-llama-server.sh (./test does) or set "
                  "NUVREL_TEST_LLAMA_SERVER";
    }
    if (!std::filesystem::is_regular_file(tinyTestModel())) {
        return ::testing::AssertionFailure()
               << "no test model at " << tinyTestModel()
               << ": run tools/make-test-model.sh (./test does) or set NUVREL_TEST_MODEL";
    }
    return ::testing::AssertionSuccess();
}

}  // namespace nuvrel::test
