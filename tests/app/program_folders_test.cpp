// A fresh home gets the program's folders on the first run that needs them, so that a user who
// wants to drop a model file in finds where it goes.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "base/paths.h"
#include "support/helper_process.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

using namespace std::chrono_literals;

TEST(ProgramFolders, AFirstRoutedSentenceCreatesTheModelsAndLogsFolders) {
    test::TemporaryHome home;
    const base::XdgPaths paths = base::XdgPaths::fromEnvironment();
    ASSERT_FALSE(std::filesystem::exists(paths.modelsDirectory()));

    test::HelperProcess ask({NUVREL_PATH, "ask", "--no-network", "아 오늘 진짜 피곤하다"});
    ASSERT_TRUE(ask.waitForExit(60s));

    EXPECT_TRUE(std::filesystem::is_directory(paths.modelsDirectory()));
    EXPECT_TRUE(std::filesystem::is_directory(paths.logsDirectory()));
}

}  // namespace
}  // namespace nuvrel::app
