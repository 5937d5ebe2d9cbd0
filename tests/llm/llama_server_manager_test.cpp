#include "llm/llama_server_manager.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <future>
#include <thread>

#include "base/cancellation.h"
#include "base/files.h"
#include "base/paths.h"
#include "base/task.h"
#include "llm/error_capture.h"
#include "llm/llm_error.h"
#include "llm/managed_llama_backend.h"
#include "llm/server_process_support.h"
#include "support/loopback_server.h"
#include "support/recording_sink.h"
#include "support/temporary_home.h"

namespace nuvrel::llm {
namespace {

using namespace std::chrono_literals;
using base::Signal;
using base::SignalResult;
using test::CountingProcesses;
using test::ForeignProcess;

using Clock = std::chrono::steady_clock;

class LlamaServerManagerTest : public ::testing::Test {
protected:
    LlamaServerManagerTest() {
        modelPath = base::XdgPaths::fromEnvironment().modelsDirectory() / "model.gguf";
        base::writeFileAtomically(modelPath, "GGUF");
        logs = base::XdgPaths::fromEnvironment().logsDirectory();
    }

    std::unique_ptr<LlamaServerManager> manager(int port,
                                                LlamaServerMode mode = LlamaServerMode::chat) {
        return std::make_unique<LlamaServerManager>(modelPath, port, session, mode, 2048,
                                                    environment());
    }

    // The live processes, counted, with the fake as the server binary.
    LlamaServerManager::Environment environment() {
        LlamaServerManager::Environment environment;
        environment.processes = processes;
        environment.findServerBinary = [] { return std::optional(test::fakeServerPath); };
        environment.logsDirectory = logs;
        environment.registerChild = [this](std::int32_t pid) {
            std::lock_guard guard(registryMutex);
            registered.push_back(pid);
        };
        environment.unregisterChild = [this](std::int32_t pid) {
            std::lock_guard guard(registryMutex);
            unregistered.push_back(pid);
        };
        environment.timing = timing;
        environment.diagnostics = recorded.diagnostics;
        return environment;
    }

    // How the fake server behaves when started on `modelPath`.
    void behave(const std::string& lines) {
        base::writeFileAtomically(modelPath.string() + ".fake", lines);
    }

    std::filesystem::path pidFile(int port) const {
        return logs / ("llama-server-" + std::to_string(port) + ".pid");
    }
    std::filesystem::path logFile(int port) const {
        return logs / ("llama-server-" + std::to_string(port) + ".log");
    }

    bool healthy(int port) { return test::answersHealth(*session, port); }
    void waitUntilHealthy(int port) {
        const auto deadline = Clock::now() + 5s;
        while (!healthy(port)) {
            ASSERT_LT(Clock::now(), deadline) << "nothing healthy on port " << port;
            std::this_thread::sleep_for(20ms);
        }
    }

    // A fake llama-server this test owns, serving `servedModel`, healthy on return.
    std::unique_ptr<ForeignProcess> foreignServer(int port,
                                                  const std::filesystem::path& servedModel) {
        auto server = std::make_unique<ForeignProcess>(
            std::vector<std::string>{test::fakeServerPath.string(), "-m", servedModel.string(),
                                     "--port", std::to_string(port)});
        waitUntilHealthy(port);
        return server;
    }

    // An ID that certainly belonged to a process that is gone.
    static std::int32_t deadPID() {
        ForeignProcess gone({"/bin/true"});
        gone.waitForExit(5s);
        return gone.pid();
    }

    bool alive(std::int32_t pid) { return ::kill(pid, 0) == 0; }

    std::string own() const { return std::to_string(::getpid()); }

    nuvrel::test::TemporaryHome home;
    std::filesystem::path modelPath;
    std::filesystem::path logs;
    const nuvrel::test::RecordedDiagnostics recorded;
    std::shared_ptr<CountingProcesses> processes = std::make_shared<CountingProcesses>();
    std::shared_ptr<base::HttpSession> session = std::make_shared<base::HttpSession>();
    LlamaServerManager::Timing timing = [] {
        LlamaServerManager::Timing t;
        t.healthPollInterval = 50ms;
        return t;
    }();
    std::mutex registryMutex;
    std::vector<std::int32_t> registered;
    std::vector<std::int32_t> unregistered;
};

TEST_F(LlamaServerManagerTest, SpawnsWithItsArgumentsAndWaitsUntilHealthyThenStops) {
    constexpr int port = 18641;
    behave("unhealthy_ms=400");
    auto server = manager(port);

    const auto start = Clock::now();
    server->ensureRunning();
    EXPECT_GE(Clock::now() - start, 400ms) << "returned while /health still answered 503";
    ASSERT_EQ(processes->spawned().size(), 1u);
    const std::int32_t child = processes->spawned().front();
    EXPECT_TRUE(healthy(port));
    EXPECT_EQ(processes->listeningPIDs(port), std::vector<std::int32_t>{child});
    EXPECT_EQ(registered, std::vector<std::int32_t>{child});

    // Owner, child and model file name; no line end; written through a rename.
    EXPECT_EQ(base::readFile(pidFile(port)), own() + ":" + std::to_string(child) + ":model.gguf");
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(logs)) {
        files.push_back(entry.path().filename().string());
    }
    std::sort(files.begin(), files.end());
    EXPECT_EQ(files,
              (std::vector<std::string>{"llama-server-18641.log", "llama-server-18641.pid"}));

    const auto log = base::readFile(logFile(port)).value_or("");
    EXPECT_NE(log.find("arguments: -m " + modelPath.string() +
                       " --port 18641 -ngl 99 --ctx-size 2048 --host 127.0.0.1 --jinja"
                       " --chat-template-kwargs {\"enable_thinking\":false} --reasoning-budget 0"
                       " --parallel 1\n"),
              std::string::npos)
        << log;
    EXPECT_NE(log.find("fake llama-server " + std::to_string(child) + " starting"),
              std::string::npos)
        << "standard error is not in the log: " << log;

    server->ensureRunning();  // the running child is enough
    EXPECT_EQ(processes->spawned().size(), 1u);

    server->stop();
    EXPECT_FALSE(alive(child));
    EXPECT_FALSE(std::filesystem::exists(pidFile(port)));
    EXPECT_EQ(unregistered, std::vector<std::int32_t>{child});

    // Usable again after stop(), with a log of its own.
    { std::ofstream(logFile(port), std::ios::app) << "LEFT OVER FROM THE FIRST RUN\n"; }
    behave("");
    server->ensureRunning();
    ASSERT_EQ(processes->spawned().size(), 2u);
    const auto second = base::readFile(logFile(port)).value_or("");
    EXPECT_EQ(second.find("LEFT OVER"), std::string::npos);
    EXPECT_NE(second.find("fake llama-server " + std::to_string(processes->spawned()[1])),
              std::string::npos);
}

TEST_F(LlamaServerManagerTest, ArgumentsPerModeAndPropsNames) {
    const std::vector<std::string> common = {"-m", "/m/e.gguf",  "--port", "18642",  "-ngl",
                                             "99", "--ctx-size", "2048",   "--host", "127.0.0.1"};
    auto embedding = common;
    embedding.insert(embedding.end(), {"--embeddings", "--parallel", "1"});
    EXPECT_EQ(
        LlamaServerManager::serverArguments("/m/e.gguf", 18642, LlamaServerMode::embedding, 2048),
        embedding);
    EXPECT_EQ(LlamaServerManager::routerContextSize("kestrune-mini-router-v2.gguf"), 4096);
    EXPECT_EQ(LlamaServerManager::routerContextSize("qwen2.5-1.5b-instruct-q4_k_m.gguf"), 2048);

    EXPECT_EQ(LlamaServerManager::loadedModelFileName(R"({"model_path":"/a/b/model.gguf","x":1})"),
              "model.gguf");
    EXPECT_EQ(LlamaServerManager::loadedModelFileName(R"({"model_path":"model.gguf"})"),
              "model.gguf");
    EXPECT_EQ(LlamaServerManager::loadedModelFileName(R"({"model_path":7})"), std::nullopt);
    EXPECT_EQ(LlamaServerManager::loadedModelFileName(R"({"model":"/a/model.gguf"})"),
              std::nullopt);
    EXPECT_EQ(LlamaServerManager::loadedModelFileName(R"(["/a/model.gguf"])"), std::nullopt);
    EXPECT_EQ(LlamaServerManager::loadedModelFileName("not json"), std::nullopt);
}

TEST_F(LlamaServerManagerTest, ConcurrentCallersShareOneSpawn) {
    constexpr int port = 18643;
    behave("unhealthy_ms=500");
    auto server = manager(port);
    std::vector<std::future<void>> callers;
    for (int i = 0; i < 4; ++i) {
        callers.push_back(std::async(std::launch::async, [&] { server->ensureRunning(); }));
    }
    // A caller that arrives once the child exists, while /health still says 503, joins the
    // start too rather than returning early.
    while (processes->spawned().empty()) std::this_thread::sleep_for(5ms);
    server->ensureRunning();
    EXPECT_TRUE(healthy(port));
    for (auto& caller : callers) EXPECT_NO_THROW(caller.get());
    EXPECT_EQ(processes->spawned().size(), 1u);
}

TEST_F(LlamaServerManagerTest, ACallerThatGivesUpLeavesTheStartToTheOthers) {
    constexpr int port = 18644;
    behave("unhealthy_ms=800");
    auto server = manager(port);
    base::Task<void> impatient([&] { server->ensureRunning(); });
    std::this_thread::sleep_for(200ms);
    const auto cancelledAt = Clock::now();
    impatient.cancel();
    EXPECT_THROW(impatient.value(), base::Cancelled);
    EXPECT_LT(Clock::now() - cancelledAt, 300ms);

    server->ensureRunning();
    EXPECT_EQ(processes->spawned().size(), 1u);
    EXPECT_TRUE(healthy(port));
}

TEST_F(LlamaServerManagerTest, AGuestServerWithALiveOwnerIsUsedAndNeverStopped) {
    constexpr int port = 18645;
    ForeignProcess owner({"/bin/sleep", "30"});
    auto guest = foreignServer(port, modelPath);
    const std::string record =
        std::to_string(owner.pid()) + ":" + std::to_string(guest->pid()) + ":model.gguf";
    base::writeFileAtomically(pidFile(port), record);

    auto server = manager(port);
    server->ensureRunning();
    server->ensureRunning();
    EXPECT_TRUE(processes->spawned().empty());
    server->stop();
    std::this_thread::sleep_for(100ms);
    EXPECT_FALSE(guest->exited());
    EXPECT_EQ(base::readFile(pidFile(port)), record);

    // Once the guest is gone, the next start spawns our own.
    guest.reset();
    server->ensureRunning();
    ASSERT_EQ(processes->spawned().size(), 1u);
    EXPECT_EQ(base::readFile(pidFile(port)),
              own() + ":" + std::to_string(processes->spawned()[0]) + ":model.gguf");
}

TEST_F(LlamaServerManagerTest, AnOrphanOfADeadOwnerIsTerminatedBeforeANewSpawn) {
    constexpr int port = 18646;
    auto orphan = foreignServer(port, modelPath);
    base::writeFileAtomically(pidFile(port), std::to_string(deadPID()) + ":" +
                                                 std::to_string(orphan->pid()) + ":model.gguf");
    auto server = manager(port);
    server->ensureRunning();
    EXPECT_TRUE(orphan->exited());
    EXPECT_EQ(orphan->signal(), SIGTERM);
    ASSERT_EQ(processes->spawned().size(), 1u);
    EXPECT_EQ(processes->listeningPIDs(port), processes->spawned());
}

TEST_F(LlamaServerManagerTest, AnOrphanWithoutAReadableRecordIsAdoptedAndStoppedWithUs) {
    constexpr int port = 18647;
    auto orphan = foreignServer(port, modelPath);
    // Unreadable in the stale step, so left alone there; no known owner in adoption.
    base::writeFileAtomically(pidFile(port), "garbage:here");
    auto server = manager(port);

    recorded.sink->take();
    server->ensureRunning();
    const std::string diagnostics = recorded.sink->take();
    EXPECT_TRUE(processes->spawned().empty());
    EXPECT_EQ(
        diagnostics,
        "[Nuvrel] adopted an ORPHANED llama-server (pid " + std::to_string(orphan->pid()) +
            ") on port 18647 and took ownership — it will now be stopped with this session\n");
    EXPECT_EQ(base::readFile(pidFile(port)),
              own() + ":" + std::to_string(orphan->pid()) + ":model.gguf");
    EXPECT_TRUE(registered.empty()) << "an adopted server is not our child";

    // A later call checks the server again and keeps it ours.
    server->ensureRunning();
    server->stop();
    EXPECT_TRUE(orphan->waitForExit(1s));
    EXPECT_EQ(orphan->signal(), SIGTERM);
    EXPECT_FALSE(std::filesystem::exists(pidFile(port)));
}

TEST_F(LlamaServerManagerTest, AReusedPIDThatIsNotLlamaServerIsNeverSignalled) {
    constexpr int port = 18648;
    // The recorded child's ID now belongs to another program, which even listens on the port
    // and answers like a server of our model: it is named differently, so it is never ours.
    const auto other = home.path() / "other-server";
    std::filesystem::copy_file(test::fakeServerPath, other);
    std::filesystem::permissions(other, std::filesystem::perms::owner_exec,
                                 std::filesystem::perm_options::add);
    ForeignProcess reused(
        {other.string(), "-m", modelPath.string(), "--port", std::to_string(port)});
    waitUntilHealthy(port);
    base::writeFileAtomically(pidFile(port), std::to_string(deadPID()) + ":" +
                                                 std::to_string(reused.pid()) + ":model.gguf");
    auto server = manager(port);
    server->reapOrphanFromPreviousSessionIfAny();
    EXPECT_FALSE(std::filesystem::exists(pidFile(port))) << "the stale record stays";

    // Used as a guest: adoption does not take it over either.
    server->ensureRunning();
    server->stop();
    std::this_thread::sleep_for(100ms);
    EXPECT_FALSE(reused.exited());
    EXPECT_TRUE(processes->spawned().empty());
    EXPECT_FALSE(std::filesystem::exists(pidFile(port)));

    // A record whose owner lives is left alone, dead child or not.
    const std::string live = own() + ":" + std::to_string(deadPID()) + ":model.gguf";
    base::writeFileAtomically(pidFile(port), live);
    server->reapOrphanFromPreviousSessionIfAny();
    EXPECT_EQ(base::readFile(pidFile(port)), live);
}

TEST_F(LlamaServerManagerTest, AWrongModelIsReplacedOnlyWhenItIsALlamaServer) {
    constexpr int port = 18649;
    const auto other = modelPath.parent_path() / "other.gguf";
    auto wrong = foreignServer(port, other);
    auto server = manager(port);
    recorded.sink->take();
    server->ensureRunning();
    EXPECT_EQ(recorded.sink->take(),
              "[Nuvrel] port 18649 is already serving other.gguf — expected model.gguf; "
              "terminating it and spawning the correct model\n");
    EXPECT_EQ(wrong->signal(), SIGTERM);
    EXPECT_EQ(processes->spawned().size(), 1u);
    server->stop();

    // Something else answers on the port: it is never signalled, and our spawn cannot bind.
    nuvrel::test::LoopbackServer stranger([](httplib::Server& routes) {
        // Without the library's SO_REUSEPORT, so that the port is really taken.
        routes.set_socket_options([](int socket) {
            int yes = 1;
            ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        });
        routes.Get("/health", [](const httplib::Request&, httplib::Response& r) {
            r.set_content("{}", "application/json");
        });
        routes.Get("/props", [](const httplib::Request&, httplib::Response& r) { r.status = 500; });
    });
    auto blocked = manager(stranger.port());
    recorded.sink->take();
    const auto error = test::errorOf<LLMError>([&] { blocked->ensureRunning(); });
    const std::string diagnostics = recorded.sink->take();
    EXPECT_EQ(error, LLMError::portOccupiedUnhealthy(stranger.port()));
    const std::string port2 = std::to_string(stranger.port());
    EXPECT_EQ(diagnostics,
              "[Nuvrel] port " + port2 +
                  " is already serving an unverifiable model — expected model.gguf; "
                  "terminating it and spawning the correct model\n"
                  "[Nuvrel] port " +
                  port2 +
                  " is answering /health after our own spawn failed, but it's serving "
                  "an unverifiable model — expected model.gguf; refusing to adopt it\n");
    EXPECT_EQ(processes->spawned().size(), 2u);
    EXPECT_FALSE(std::filesystem::exists(pidFile(stranger.port())));
    EXPECT_FALSE(alive(processes->spawned()[1]));
}

TEST_F(LlamaServerManagerTest, TheRightFileNameOnThePortIsAdoptedEvenWithoutTheModelFile) {
    nuvrel::test::LoopbackServer stranger([](httplib::Server& routes) {
        routes.Get("/health", [](const httplib::Request&, httplib::Response& r) {
            r.set_content("{}", "application/json");
        });
        routes.Get("/props", [](const httplib::Request&, httplib::Response& r) {
            r.set_content(R"({"model_path":"/elsewhere/model.gguf"})", "application/json");
        });
    });
    std::filesystem::remove(modelPath);
    auto server = manager(stranger.port());
    server->ensureRunning();
    EXPECT_TRUE(processes->spawned().empty());
    server->stop();  // not a llama-server, so a guest: nothing to stop, nothing written
    EXPECT_FALSE(std::filesystem::exists(pidFile(stranger.port())));
}

TEST_F(LlamaServerManagerTest, StopDuringTheHealthPollCancelsTheStart) {
    constexpr int port = 18650;
    behave("unhealthy_ms=30000");
    auto server = manager(port);
    auto waiting = std::async(std::launch::async, [&] { server->ensureRunning(); });
    const auto deadline = Clock::now() + 5s;
    while (processes->spawned().empty() || !std::filesystem::exists(pidFile(port))) {
        ASSERT_LT(Clock::now(), deadline);
        std::this_thread::sleep_for(10ms);
    }
    const std::int32_t child = processes->spawned().front();
    std::this_thread::sleep_for(100ms);

    server->stop();
    EXPECT_THROW(waiting.get(), base::Cancelled);
    EXPECT_FALSE(alive(child));
    EXPECT_FALSE(std::filesystem::exists(pidFile(port)));

    behave("");
    server->ensureRunning();
    EXPECT_EQ(processes->spawned().size(), 2u);
    EXPECT_TRUE(healthy(port));
}

TEST_F(LlamaServerManagerTest, ASlowStopNeverRemovesTheRecordOfANewerSpawn) {
    constexpr int port = 18655;
    behave("unhealthy_ms=30000\nignore_sigterm=1");
    timing.terminateGrace = 1500ms;
    auto server = manager(port);
    auto first = std::async(std::launch::async, [&] { server->ensureRunning(); });
    while (processes->spawned().empty()) std::this_thread::sleep_for(5ms);
    std::this_thread::sleep_for(100ms);

    // The stop waits out the grace period of a child that ignores SIGTERM; meanwhile a new
    // start spawns again on the same manager.
    auto stopping = std::async(std::launch::async, [&] { server->stop(); });
    std::this_thread::sleep_for(100ms);
    behave("");
    server->ensureRunning();
    ASSERT_EQ(processes->spawned().size(), 2u);
    const std::string newer = own() + ":" + std::to_string(processes->spawned()[1]) + ":model.gguf";
    EXPECT_EQ(base::readFile(pidFile(port)), newer);

    stopping.get();
    EXPECT_THROW(first.get(), base::Cancelled);
    EXPECT_FALSE(alive(processes->spawned()[0]));
    EXPECT_EQ(base::readFile(pidFile(port)), newer);
}

TEST_F(LlamaServerManagerTest, StopAndWaitRetiresTheManager) {
    constexpr int port = 18651;
    auto server = manager(port);
    server->ensureRunning();
    const std::int32_t child = processes->spawned().front();
    server->stopAndWait();
    EXPECT_FALSE(alive(child));
    EXPECT_EQ(test::errorOf<LLMError>([&] { server->ensureRunning(); }), LLMError::retired());
    EXPECT_EQ(processes->spawned().size(), 1u);

    // Also in the middle of a start: the start is stopped and waited for.
    behave("unhealthy_ms=30000");
    auto starting = manager(port);
    auto waiting = std::async(std::launch::async, [&] { starting->ensureRunning(); });
    while (processes->spawned().size() < 2) std::this_thread::sleep_for(10ms);
    starting->stopAndWait();
    EXPECT_FALSE(alive(processes->spawned()[1]));
    EXPECT_THROW(waiting.get(), base::Cancelled);
    EXPECT_EQ(test::errorOf<LLMError>([&] { starting->ensureRunning(); }), LLMError::retired());
}

TEST_F(LlamaServerManagerTest, StartFailures) {
    constexpr int port = 18652;
    // The model is checked before the binary.
    auto noBinary = [&](const std::filesystem::path& model) {
        auto environment = this->environment();
        environment.findServerBinary = [] { return std::optional<std::filesystem::path>(); };
        return std::make_unique<LlamaServerManager>(model, port, session, LlamaServerMode::chat,
                                                    2048, environment);
    };
    EXPECT_EQ(test::errorOf<LLMError>(
                  [&] { noBinary(modelPath.parent_path() / "missing.gguf")->ensureRunning(); }),
              LLMError::modelNotFound());
    EXPECT_EQ(test::errorOf<LLMError>([&] { noBinary(modelPath)->ensureRunning(); }),
              LLMError::binaryNotFound());
    EXPECT_TRUE(processes->spawned().empty());

    // A child that dies at once fails the start without waiting out the deadline.
    behave("exit_code=3");
    auto dying = manager(port);
    const auto start = Clock::now();
    EXPECT_EQ(test::errorOf<LLMError>([&] { dying->ensureRunning(); }),
              LLMError::serverStartTimeout());
    EXPECT_LT(Clock::now() - start, 5s);
    EXPECT_FALSE(std::filesystem::exists(pidFile(port)));

    // One that never becomes healthy is stopped at the deadline.
    behave("unhealthy_ms=30000");
    timing.healthDeadline = 700ms;
    auto slow = manager(port);
    EXPECT_EQ(test::errorOf<LLMError>([&] { slow->ensureRunning(); }),
              LLMError::serverStartTimeout());
    ASSERT_EQ(processes->spawned().size(), 2u);
    EXPECT_FALSE(alive(processes->spawned()[1]));
    EXPECT_FALSE(std::filesystem::exists(pidFile(port)));
}

TEST_F(LlamaServerManagerTest, ADeadChildIsReplacedAndAStubbornOneIsKilled) {
    constexpr int port = 18653;
    behave("ignore_sigterm=1");
    timing.terminateGrace = 400ms;
    auto server = manager(port);
    server->ensureRunning();
    const std::int32_t first = processes->spawned().front();
    ::kill(first, SIGKILL);
    // Until it can be reaped (every thread gone), without reaping it: that is the manager's.
    const auto deadline = Clock::now() + 3s;
    while (true) {
        siginfo_t info{};
        ASSERT_EQ(::waitid(P_PID, first, &info, WEXITED | WNOHANG | WNOWAIT), 0);
        if (info.si_pid == first) break;
        ASSERT_LT(Clock::now(), deadline);
        std::this_thread::sleep_for(5ms);
    }

    server->ensureRunning();
    ASSERT_EQ(processes->spawned().size(), 2u);
    const std::int32_t second = processes->spawned()[1];

    const auto stopAt = Clock::now();
    server->stop();
    const auto took = Clock::now() - stopAt;
    EXPECT_FALSE(alive(second));
    EXPECT_GE(took, 400ms) << "SIGKILL before the grace period";
    EXPECT_LT(took, 2s);
}

TEST_F(LlamaServerManagerTest, TheManagedBackendStartsItsServerBeforeTheFirstCall) {
    constexpr int port = 18654;
    behave("unhealthy_ms=300");
    auto server = std::make_shared<LlamaServerManager>(modelPath, port, session,
                                                       LlamaServerMode::chat, 2048, environment());
    ManagedLlamaBackend managed(
        server,
        LlamaServerBackend(*base::Url::parse("http://127.0.0.1:" + std::to_string(port)), session,
                           std::string(LlamaServerBackend::modelName), 0.0, 16, 10.0, 0, 0),
        "routing", recorded.diagnostics);
    recorded.sink->take();
    EXPECT_EQ(managed.complete("system", "user", R"({"type":"object"})"), R"({"fake":true})");
    const std::string diagnostics = recorded.sink->take();
    EXPECT_EQ(diagnostics.rfind("[nuvrel-latency] routing call ok in ", 0), 0u) << diagnostics;
    EXPECT_EQ(managed.modelFileName(), "model.gguf");
    EXPECT_EQ(processes->spawned().size(), 1u);
}

}  // namespace
}  // namespace nuvrel::llm
