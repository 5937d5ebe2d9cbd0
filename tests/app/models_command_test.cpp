// `nuvrel models` as a user runs it: the program against model hosts on loopback servers,
// with the files in a temporary home.
#include <gtest/gtest.h>
#include <openssl/sha.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

#include "app/command_line.h"
#include "base/files.h"
#include "base/paths.h"
#include "core/localized_strings.h"
#include "llm/model_resolution.h"
#include "support/helper_process.h"
#include "support/range_file_server.h"
#include "support/real_llama_server.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

using namespace std::chrono_literals;
using Json = nlohmann::json;

test::Finished nuvrel(std::vector<std::string> args) {
    args.insert(args.begin(), NUVREL_PATH);
    return test::runToEnd(std::move(args), 60s);
}

Json json(const test::Finished& run) {
    return Json::parse(run.output, nullptr, false);
}

std::shared_ptr<const std::string> ggufBytes(std::size_t size) {
    std::string bytes(size, 'x');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 2654435761u >> 13);
    bytes.replace(0, 8, std::string("GGUF\x03\0\0\0", 8));
    return std::make_shared<const std::string>(std::move(bytes));
}

std::string digestOf(const std::string& bytes) {
    unsigned char digest[SHA256_DIGEST_LENGTH];
    SHA256(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), digest);
    std::string hex;
    for (unsigned char byte : digest)
        hex += {"0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15]};
    return hex;
}

void writeSettings(const Json& settings) {
    base::writeFileAtomically(base::XdgPaths::fromEnvironment().settingsFile(), settings.dump());
}

TEST(ModelsCommandLine, VerbsAndTheirOptions) {
    const auto parse = [](std::vector<std::string> args) { return parseCommandLine(args); };
    const std::string hex(64, 'a');
    const auto install =
        parse({"models", "install", "https://h/x.gguf", "--sha256", hex, "--as=y.gguf"});
    const auto& options = std::get<CommandLine>(install).models;
    EXPECT_EQ(options.action, ModelsOptions::Action::install);
    EXPECT_EQ(options.target, "https://h/x.gguf");
    EXPECT_EQ(options.sha256, hex);
    EXPECT_EQ(options.asFileName, "y.gguf");
    const auto help = std::get<CommandLine>(parse({"models", "remove", "--help"})).models;
    EXPECT_EQ(help.action, ModelsOptions::Action::help);
    EXPECT_EQ(help.helpFor, ModelsOptions::Action::remove);
    EXPECT_TRUE(std::get<CommandLine>(parse({"models", "remove", "m", "--force"})).models.force);
    for (const auto& bad : std::vector<std::vector<std::string>>{
             {"models", "install", "https://h/x.gguf"},                     // no digest
             {"models", "install", "https://h/x.gguf", "--sha256", "abc"},  // short digest
             {"models", "install", "kestrune-nano-0.8b", "--as", "y.gguf"},
             {"models", "use"},
             {"models", "fetch"}}) {
        EXPECT_TRUE(std::holds_alternative<UsageError>(parse(bad))) << bad.back();
    }
}

TEST(ModelsCommand, InstallFromAnAddressListAndRemove) {
    test::TemporaryHome home;
    writeSettings({{"modelUpdateCheckEnabled", "0"}});
    const auto file = ggufBytes(9 << 20);
    test::RangeFileServer host(file);
    const auto models = base::XdgPaths::fromEnvironment().modelsDirectory();

    const auto refused = nuvrel({"models", "install", host.url(), "--sha256", digestOf("other"),
                                 "--as", "mine.gguf", "--json"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(json(refused)["error"]["kind"], "download") << refused.output;
    EXPECT_NE(refused.output.find(digestOf(*file)), std::string::npos);
    EXPECT_TRUE(std::filesystem::is_empty(models));

    const auto done = nuvrel({"models", "install", host.url(), "--sha256", digestOf(*file), "--as",
                              "mine.gguf", "--json"});
    ASSERT_EQ(done.exitCode, 0) << done.output;
    EXPECT_EQ(base::readFile(models / "mine.gguf"), *file);

    const auto list = json(nuvrel({"models", "--json"}));
    const auto& rows = list["models"];
    ASSERT_EQ(rows.size(), 4u);  // the catalog, then the file of the user's own
    EXPECT_EQ(rows[3]["fileName"], "mine.gguf");
    EXPECT_EQ(rows[3]["installed"], true);
    EXPECT_EQ(rows[3]["inUse"], true);
    EXPECT_NE(rows[0]["recommended"], rows[1]["recommended"]);  // one router, by the memory

    EXPECT_EQ(nuvrel({"models", "remove", "mine.gguf"}).exitCode, 1);
    EXPECT_EQ(nuvrel({"models", "remove", "mine.gguf", "--force"}).exitCode, 0);
    EXPECT_FALSE(std::filesystem::exists(models / "mine.gguf"));
}

// The catalog's addresses and the manifest's go to the mirror; an offered update stays until
// it is installed.
TEST(ModelsCommand, MirrorServesTheCatalogAndTheUpdateOffer) {
    test::TemporaryHome home;
    const auto file = ggufBytes(1 << 20);
    const Json manifest = {
        {"router",
         {{"fileName", "nuvrel-nano-router-v6-q4_k_m.gguf"},
          {"url", "https://models.nuvrel.app/v1/nuvrel-nano-router-v6-q4_k_m.gguf"},
          {"sizeBytes", file->size()},
          {"sha256", digestOf(*file)}}}};
    test::RangeFileServer mirror(file, "127.0.0.2", [&](httplib::Server& server) {
        server.Get("/v1/manifest.json", [&](const httplib::Request&, httplib::Response& response) {
            response.set_content(manifest.dump(), "application/json");
        });
    });
    writeSettings({{"modelMirror", mirror.url("")}});

    const auto check = nuvrel({"models", "check-updates", "--json"});
    EXPECT_EQ(json(check)["decision"], "available") << check.output;
    EXPECT_EQ(json(nuvrel({"models", "--json"}))["updateOffer"]["fileName"],
              "nuvrel-nano-router-v6-q4_k_m.gguf");

    EXPECT_EQ(nuvrel({"models", "install", "nuvrel-nano-router-v6-q4_k_m.gguf"}).exitCode, 0);
    EXPECT_EQ(mirror.lastPath(), "/v1/nuvrel-nano-router-v6-q4_k_m.gguf");
    EXPECT_TRUE(json(nuvrel({"models", "--json"}))["updateOffer"].is_null());

    EXPECT_EQ(nuvrel({"models", "install", "kestrune-nano-0.8b"}).exitCode, 0);
    EXPECT_EQ(mirror.lastPath(), "/v1/nuvrel-nano-router-v5-q4_k_m.gguf");
    const auto log = base::readFile(base::XdgPaths::fromEnvironment().networkActivityFile());
    ASSERT_TRUE(log);
    EXPECT_NE(log->find("modelUpdateCheck"), std::string::npos);
    EXPECT_NE(log->find("/v1/nuvrel-nano-router-v5-q4_k_m.gguf"), std::string::npos);
}

TEST(ModelsCommand, AMissingModelCardSaysHowToInstallOne) {
    test::TemporaryHome home;
    ::setenv("NUVREL_DEBUG_ROUTER_PORT", "18691", 1);
    const auto run = nuvrel({"ask", "--lang", "en", "--no-network", "아 오늘 진짜 피곤하다"});
    ::unsetenv("NUVREL_DEBUG_ROUTER_PORT");
    EXPECT_EQ(run.exitCode, 1);
    const auto& strings = core::LocalizedStrings::en();
    EXPECT_NE(run.output.find(strings.llmUnavailableMessage), std::string::npos) << run.output;
    EXPECT_TRUE(run.output.ends_with(strings.modelInstallHintLine + "\n")) << run.output;
}

// A model whose server does not come up leaves the previous one in use; a good one is taken.
TEST(ModelsCommand, UseSwitchesOnlyToAModelThatStarts) {
    ASSERT_TRUE(test::realServerAvailable());
    test::TemporaryHome home;
    const auto models = base::XdgPaths::fromEnvironment().modelsDirectory();
    std::filesystem::create_directories(models);
    std::filesystem::create_symlink(test::tinyTestModel(), models / "tiny.gguf");
    base::writeFileAtomically(models / "broken.gguf", *ggufBytes(4096));
    writeSettings({{"modelFile", "tiny.gguf"}, {"modelUpdateCheckEnabled", "0"}});
    const std::string path = std::getenv("PATH");
    ::setenv("PATH", (test::realServerBinary().parent_path().string() + ":" + path).c_str(), 1);
    ::setenv("NUVREL_DEBUG_ROUTER_PORT", "18692", 1);

    EXPECT_EQ(nuvrel({"models", "use", "broken.gguf"}).exitCode, 1);
    EXPECT_NE(base::readFile(base::XdgPaths::fromEnvironment().settingsFile())->find("tiny.gguf"),
              std::string::npos);
    std::filesystem::remove(models / "broken.gguf");
    std::filesystem::copy_file(test::tinyTestModel(), models / "other.gguf");
    EXPECT_EQ(nuvrel({"models", "use", "other.gguf"}).exitCode, 0);
    const auto list = json(nuvrel({"models", "--json"}));
    EXPECT_EQ(list["models"][4]["fileName"], "tiny.gguf");
    EXPECT_EQ(list["models"][3]["inUse"], true);  // other.gguf, sorted first

    ::unsetenv("NUVREL_DEBUG_ROUTER_PORT");
    ::setenv("PATH", path.c_str(), 1);
}

}  // namespace
}  // namespace nuvrel::app
