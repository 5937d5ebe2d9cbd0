// A sentence that needs no network, key store, file index or calendar loads none of their
// libraries: each costs the start of every run otherwise.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/environment_override.h"
#include "support/helper_process.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

using namespace std::chrono_literals;

// What the loader wrote while the program ran (LD_DEBUG_OUTPUT adds the process id).
std::string loaderLog(const std::vector<std::string>& argv, const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    const std::string prefix = (folder / "loader").string();
    {
        test::EnvironmentOverride environment("LD_DEBUG", "files");
        environment.set("LD_DEBUG_OUTPUT", prefix.c_str());
        test::HelperProcess program(argv);
        EXPECT_TRUE(program.waitForExit(60s));
    }
    std::string log;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::ifstream file(entry.path());
        log += std::string(std::istreambuf_iterator<char>(file), {});
        std::filesystem::remove(entry.path());
    }
    return log;
}

TEST(LazyLibraries, FastPathSentencesOpenNoneOfTheLibrariesLoadedOnFirstUse) {
    test::TemporaryHome home;
    const std::vector<std::vector<std::string>> runs = {{NUVREL_PATH, "ask", "2+2"},
                                                        {NUVREL_PATH, "explain", "15% of 80"}};
    for (const auto& argv : runs) {
        const std::string log = loaderLog(argv, home.path() / "loader");
        // The log is the loader's: the text library every run needs is in it.
        EXPECT_NE(log.find("libicuuc.so"), std::string::npos) << argv[1];
        for (const char* lazy : {"libcurl.so", "libcrypto.so", "libssl.so", "libsecret-1.so",
                                 "libtracker-sparql-3.0.so", "libical.so", "libpoppler"}) {
            EXPECT_EQ(log.find(lazy), std::string::npos) << argv[1] << " opened " << lazy;
        }
    }
}

}  // namespace
}  // namespace nuvrel::app
