#pragma once
// LlamaServerManager supervises one llama-server child on one loopback port. The port may
// already be held by a server a crashed session left behind, by one another live instance
// owns, or by something else: every step here settles who owns the server, so that a server
// we own never outlives us and one we do not own is never killed.
//
// Threading: every operation may be called from any task and blocks on the caller's thread.
// One mutex guards the mutable fields and is never held across a wait. stop() can block for
// up to about 5 s while a child is brought down.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/diagnostics.h"
#include "base/http.h"
#include "base/process_control.h"
#include "base/sleep.h"
#include "llm/server_ensuring.h"

namespace nuvrel::llm {

enum class LlamaServerMode { chat, embedding };

inline constexpr int routerServerPort = 8765;
inline constexpr int summaryServerPort = 8766;
inline constexpr int embeddingServerPort = 8767;

class LlamaServerManager : public ServerEnsuring {
public:
    struct Timing {
        std::chrono::milliseconds healthDeadline{60'000};
        std::chrono::milliseconds healthPollInterval{500};
        std::chrono::milliseconds healthRequestTimeout{2'000};
        // SIGTERM, then this long until SIGKILL.
        std::chrono::milliseconds terminateGrace{3'000};
        // After the signals, how long to wait for the child to be gone.
        std::chrono::milliseconds exitWait{2'000};
        std::chrono::milliseconds signalPollInterval{50};
    };

    // What the manager does to the machine, injected; the live form is
    // platform::liveLlamaServerEnvironment.
    struct Environment {
        std::shared_ptr<base::ProcessControl> processes;
        std::function<std::optional<std::filesystem::path>()> findServerBinary;
        // Where "llama-server-<port>.log" and ".pid" go; created on demand.
        std::filesystem::path logsDirectory;
        // The pause between health polls; it wakes early when the start is cancelled.
        base::SleepFn sleep = base::liveSleep;
        // The crash reaper's table of our children.
        std::function<void(std::int32_t)> registerChild = [](std::int32_t) {};
        std::function<void(std::int32_t)> unregisterChild = [](std::int32_t) {};
        Timing timing;
        base::Diagnostics diagnostics{};
    };

    // 4096 for a file named "kestrune-mini-router-...", else 2048.
    static int routerContextSize(std::string_view modelFileName);
    // The arguments after the program name, in order, for this mode.
    static std::vector<std::string> serverArguments(const std::filesystem::path& modelPath,
                                                    int port, LlamaServerMode mode, int ctxSize);
    // The last path component of the props reply's string "model_path"; nothing otherwise.
    static std::optional<std::string> loadedModelFileName(std::string_view propsJSON);

    // Stores; starts nothing.
    LlamaServerManager(std::filesystem::path modelPath, int port,
                       std::shared_ptr<base::HttpSession> session, LlamaServerMode mode,
                       int ctxSize, Environment environment);
    // Calls stop() and waits for a start still running.
    ~LlamaServerManager() override;
    LlamaServerManager(const LlamaServerManager&) = delete;
    LlamaServerManager& operator=(const LlamaServerManager&) = delete;

    // Returns once a server with this model answers on the port, sharing one start among all
    // concurrent callers. Throws LLMError (retired, modelNotFound, binaryNotFound,
    // serverStartTimeout, portOccupiedUnhealthy), the platform's error when the log file or the
    // launch fails, or base::Cancelled when the start is stopped. A caller whose own task is
    // cancelled stops waiting at once; the start goes on for the others.
    void ensureRunning() override;
    // Stops what this object owns and cancels a start in flight; the object stays usable.
    void stop();
    // stop(), then waits for the start in flight; afterwards ensureRunning() fails with retired.
    void stopAndWait();
    // The stale-server step alone: kills a server that a dead instance left on this port.
    void reapOrphanFromPreviousSessionIfAny();

    std::filesystem::path modelPath() const override { return modelPath_; }
    int port() const { return port_; }
    LlamaServerMode mode() const { return mode_; }
    int ctxSize() const { return ctxSize_; }
    std::filesystem::path logFilePath() const;
    std::filesystem::path pidFilePath() const;

private:
    struct StartAttempt;
    struct PIDRecord;

    std::shared_ptr<StartAttempt> acquireStartTask();
    void performStart();
    void spawnServer();
    void pollUntilHealthy(base::ChildProcess& child);
    void failedPoll(const std::shared_ptr<base::ChildProcess>& child, std::uint64_t epoch);
    bool healthCheck();
    std::optional<std::string> fetchLoadedModelFileName();
    void terminateLlamaServerListeners();
    void reapStaleServerFromPreviousSession();
    void adoptExistingServerTakingOwnershipIfOrphaned();
    std::uint64_t writePIDFile(std::int32_t childPID);
    void removePIDFileIfEpoch(std::uint64_t epoch);
    void removePIDFileIfStillOwnedBy(std::int32_t owner);
    std::optional<std::vector<std::string>> readPIDFileFields() const;
    void terminateWithEscalation(base::ChildProcess& child);
    void killPIDWithEscalation(std::int32_t pid);
    void clearProcessIf(const std::shared_ptr<base::ChildProcess>& child);
    std::string modelFileName() const;
    base::HttpResponse get(std::string_view path);

    const std::filesystem::path modelPath_;
    const int port_;
    const LlamaServerMode mode_;
    const int ctxSize_;
    const std::shared_ptr<base::HttpSession> session_;
    const Environment environment_;

    // What this object holds on its port:
    //
    //            spawn, then healthy                       stop, or the child exits
    //   idle ─────────────────────────────▶ owned ──────────────────────────────────▶ idle
    //    │   our model on the port, its owner alive        stop: left running
    //    ├─────────────────────────────────────▶ guest ─────────────────────────────▶ idle
    //    │   our model on the port, its owner dead         stop: killed
    //    └─────────────────────────────────────▶ adopted ───────────────────────────▶ idle
    //   any ── stopAndWait ──▶ retired: holds nothing ever again, ensureRunning fails
    //
    // An orphan (a server whose owner died) is never held as such: before a start the stale-
    // server step kills it, or a start finds our model on it and adopts it. Guests and adopted
    // servers go through a whole start at each ensureRunning, which notices one that has gone.
    struct Idle {};
    struct Owned {
        std::shared_ptr<base::ChildProcess> child;
    };
    struct Guest {};
    struct Adopted {
        std::int32_t pid = 0;
    };
    struct Retired {};
    using Hold = std::variant<Idle, Owned, Guest, Adopted, Retired>;

    // Becomes `next` unless retired; false when retired. Under lock_.
    bool holdUnlessRetired(Hold next);
    // Brings down what `released` held: our child and an adopted server; a guest stays up.
    void release(const Hold& released, std::uint64_t epoch);

    mutable std::mutex lock_;
    Hold hold_ = Idle{};
    std::shared_ptr<StartAttempt> startTask_;
    std::uint64_t spawnEpoch_ = 0;
    // Every start thread not yet joined, so that none outlives the object.
    std::vector<std::shared_ptr<StartAttempt>> launched_;
};

}  // namespace nuvrel::llm
