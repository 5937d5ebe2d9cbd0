// The server manager against the real llama-server and the tiny test model: the ownership
// rules with real processes, and the crash reaper with real children.
#include "support/real_llama_server.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <chrono>
#include <future>
#include <nlohmann/json.hpp>
#include <thread>

#include "base/cancellation.h"
#include "base/files.h"
#include "base/paths.h"
#include "llm/error_capture.h"
#include "llm/llama_server_manager.h"
#include "llm/llm_error.h"
#include "llm/managed_llama_backend.h"
#include "llm/server_process_support.h"
#include "support/helper_process.h"
#include "support/recording_sink.h"
#include "support/temporary_home.h"

namespace nuvrel::llm {
namespace {

using namespace std::chrono_literals;
using nuvrel::test::HelperProcess;
using nuvrel::test::realServerBinary;
using test::CountingProcesses;
using test::ForeignProcess;
using Clock = std::chrono::steady_clock;

const std::string processHelper = PROCESS_HELPER_PATH;

class RealLlamaServerTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(nuvrel::test::realServerAvailable());
        modelPath = base::XdgPaths::fromEnvironment().modelsDirectory() / "model.gguf";
        std::filesystem::create_directories(modelPath.parent_path());
        std::filesystem::create_symlink(nuvrel::test::tinyTestModel(), modelPath);
        logs = base::XdgPaths::fromEnvironment().logsDirectory();
    }

    std::unique_ptr<LlamaServerManager> manager(int port) {
        LlamaServerManager::Environment environment;
        environment.processes = processes;
        environment.findServerBinary = [] { return std::optional(realServerBinary()); };
        environment.logsDirectory = logs;
        environment.timing.healthPollInterval = 50ms;
        return std::make_unique<LlamaServerManager>(modelPath, port, session, LlamaServerMode::chat,
                                                    2048, environment);
    }

    // A real server this test owns, started the way the manager starts one, healthy on return.
    std::unique_ptr<ForeignProcess> foreignServer(
        int port, const std::filesystem::path& binary = realServerBinary()) {
        std::vector<std::string> argv{binary.string()};
        for (auto& word :
             LlamaServerManager::serverArguments(modelPath, port, LlamaServerMode::chat, 2048)) {
            argv.push_back(word);
        }
        auto server = std::make_unique<ForeignProcess>(argv);
        const auto deadline = Clock::now() + 30s;
        while (!healthy(port)) {
            if (Clock::now() > deadline || server->exited()) {
                ADD_FAILURE() << "the foreign server never became healthy on port " << port;
                break;
            }
            std::this_thread::sleep_for(50ms);
        }
        return server;
    }

    bool healthy(int port) { return test::answersHealth(*session, port); }

    std::filesystem::path pidFile(int port) const {
        return logs / ("llama-server-" + std::to_string(port) + ".pid");
    }
    static bool alive(std::int32_t pid) { return ::kill(pid, 0) == 0; }
    static std::string own() { return std::to_string(::getpid()); }
    static std::int32_t deadPID() {
        ForeignProcess gone({"/bin/true"});
        gone.waitForExit(5s);
        return gone.pid();
    }

    nuvrel::test::TemporaryHome home;
    std::filesystem::path modelPath;
    std::filesystem::path logs;
    std::shared_ptr<CountingProcesses> processes = std::make_shared<CountingProcesses>();
    std::shared_ptr<base::HttpSession> session = std::make_shared<base::HttpSession>();
};

TEST_F(RealLlamaServerTest, SpawnsOnceForConcurrentCallersRoutesAndStops) {
    constexpr int port = 18661;
    auto server = std::shared_ptr<LlamaServerManager>(manager(port));
    std::vector<std::future<void>> callers;
    for (int i = 0; i < 3; ++i) {
        callers.push_back(std::async(std::launch::async, [&] { server->ensureRunning(); }));
    }
    for (auto& caller : callers) ASSERT_NO_THROW(caller.get());
    ASSERT_EQ(processes->spawned().size(), 1u);
    const std::int32_t child = processes->spawned().front();
    EXPECT_EQ(processes->listeningPIDs(port), std::vector<std::int32_t>{child});
    EXPECT_EQ(processes->processName(child), "llama-server");
    EXPECT_EQ(base::readFile(pidFile(port)), own() + ":" + std::to_string(child) + ":model.gguf");

    // A schema-constrained call through the managed backend comes back as valid JSON.
    ManagedLlamaBackend managed(
        server,
        LlamaServerBackend(*base::Url::parse("http://127.0.0.1:" + std::to_string(port)), session,
                           std::string(LlamaServerBackend::modelName), 0.0, 48, 30.0, 0, 0),
        "routing");
    const std::string schema =
        R"({"type":"object","properties":{"intent":{"type":"string"}},"required":["intent"]})";
    const nuvrel::test::RecordedDiagnostics recorded;
    managed.diagnostics = recorded.diagnostics;
    const std::string reply = managed.complete("Route the query.", "hello", schema);
    EXPECT_EQ(recorded.sink->text().rfind("[nuvrel-latency] routing call ok in ", 0), 0u);
    const auto decoded = nlohmann::json::parse(reply, nullptr, false);
    ASSERT_TRUE(decoded.is_object()) << reply;
    EXPECT_TRUE(decoded.contains("intent")) << reply;
    EXPECT_EQ(processes->spawned().size(), 1u);

    server->stop();
    EXPECT_FALSE(alive(child));
    EXPECT_FALSE(std::filesystem::exists(pidFile(port)));
}

TEST_F(RealLlamaServerTest, AReusedPIDThatIsNotLlamaServerIsNeverSignalled) {
    constexpr int port = 18664;
    // The same server under another name: it listens and serves our model, but it is not ours.
    const auto renamed = home.path() / "other-server";
    std::filesystem::copy_file(realServerBinary(), renamed);
    auto stranger = foreignServer(port, renamed);
    base::writeFileAtomically(pidFile(port), std::to_string(deadPID()) + ":" +
                                                 std::to_string(stranger->pid()) + ":model.gguf");
    auto server = manager(port);
    server->ensureRunning();
    server->stop();
    std::this_thread::sleep_for(200ms);
    EXPECT_FALSE(stranger->exited());
    EXPECT_TRUE(processes->spawned().empty());
    EXPECT_FALSE(std::filesystem::exists(pidFile(port)));
}

TEST_F(RealLlamaServerTest, StopDuringTheHealthPollThenStopAndWaitRetires) {
    constexpr int port = 18665;
    auto server = manager(port);
    auto starting = std::async(std::launch::async, [&] { server->ensureRunning(); });
    const auto deadline = Clock::now() + 5s;
    while (processes->spawned().empty()) {
        ASSERT_LT(Clock::now(), deadline);
        std::this_thread::sleep_for(2ms);
    }
    // The model takes far longer than this to load: the start is still polling.
    std::this_thread::sleep_for(20ms);
    server->stop();
    EXPECT_THROW(starting.get(), base::Cancelled);
    EXPECT_FALSE(alive(processes->spawned().front()));
    EXPECT_FALSE(std::filesystem::exists(pidFile(port)));

    server->ensureRunning();
    ASSERT_EQ(processes->spawned().size(), 2u);
    server->stopAndWait();
    EXPECT_FALSE(alive(processes->spawned()[1]));
    EXPECT_EQ(test::errorOf<LLMError>([&] { server->ensureRunning(); }), LLMError::retired());
}

// The crashing process's children are re-parented to this test, so that it can see how
// each of them ended.
class CrashReaperTest : public RealLlamaServerTest {
protected:
    void SetUp() override {
        RealLlamaServerTest::SetUp();
        ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    }
    void TearDown() override { ::prctl(PR_SET_CHILD_SUBREAPER, 0); }

    static void expectCrashed(HelperProcess& helper) {
        const auto status = helper.waitForExit(30s);
        ASSERT_TRUE(status);
        ASSERT_TRUE(WIFSIGNALED(*status)) << "exit status " << *status;
        EXPECT_EQ(WTERMSIG(*status), SIGSEGV);
    }
};

TEST_F(CrashReaperTest, ACrashTakesTheRealServerDownWithIt) {
    constexpr int port = 18666;
    HelperProcess helper({processHelper, "crash-server", realServerBinary().string(),
                          modelPath.string(), std::to_string(port)});
    const auto line = helper.readLine(60s);
    ASSERT_TRUE(line) << "the helper never started its server";
    const pid_t server = std::stoi(*line);
    expectCrashed(helper);
    EXPECT_TRUE(nuvrel::test::waitForChild(server, 10s)) << "llama-server outlived the crash";
    EXPECT_FALSE(healthy(port));
}

TEST_F(CrashReaperTest, EightChildrenAreTrackedAndANinthIsNot) {
    HelperProcess helper({processHelper, "crash-sleepers", "9"});
    std::vector<pid_t> sleepers;
    for (int i = 0; i < 9; ++i) {
        const auto line = helper.readLine(10s);
        ASSERT_TRUE(line);
        sleepers.push_back(std::stoi(*line));
    }
    expectCrashed(helper);
    for (int i = 0; i < 8; ++i) {
        const auto status = nuvrel::test::waitForChild(sleepers[i], 5s);
        ASSERT_TRUE(status) << "sleeper " << i << " outlived the crash";
        EXPECT_TRUE(WIFSIGNALED(*status) && WTERMSIG(*status) == SIGTERM);
    }
    EXPECT_FALSE(nuvrel::test::waitForChild(sleepers[8], 300ms)) << "a ninth child was tracked";
    ::kill(sleepers[8], SIGKILL);
    nuvrel::test::waitForChild(sleepers[8], 5s);
}

TEST_F(CrashReaperTest, AnUnregisteredChildIsLeftAloneAndTheCrashTakesItsDefaultCourse) {
    HelperProcess helper({processHelper, "crash-unregistered"});
    const auto line = helper.readLine(10s);
    ASSERT_TRUE(line);
    const pid_t sleeper = std::stoi(*line);
    expectCrashed(helper);
    EXPECT_FALSE(nuvrel::test::waitForChild(sleeper, 300ms))
        << "an unregistered child was signalled";
    ::kill(sleeper, SIGKILL);
    nuvrel::test::waitForChild(sleeper, 5s);
}

}  // namespace
}  // namespace nuvrel::llm
