#include "llm/llama_server_manager.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <exception>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>
#include <thread>
#include <utility>

#include "base/cancellation.h"
#include "base/diagnostics.h"
#include "base/files.h"
#include "base/paths.h"
#include "base/url.h"
#include "llm/llm_error.h"
#include "llm/server_binary.h"

namespace nuvrel::llm {

using namespace std::chrono_literals;

// One start in flight, shared by every caller of ensureRunning(). It runs on a thread of its
// own with a stop request of its own: a caller that gives up does not stop it for the others;
// only stop() does.
struct LlamaServerManager::StartAttempt {
    std::shared_ptr<base::CancellationState> cancellation = base::CancellationState::make();
    std::mutex mutex;
    std::condition_variable changed;
    bool finished = false;
    std::exception_ptr error;
    std::thread thread;

    // Rethrows the start's failure. When `interruptible`, a cancelled current task stops
    // waiting at once with Cancelled.
    void wait(bool interruptible) {
        std::optional<base::CancelCallback> onCancel;
        if (interruptible) {
            onCancel.emplace([this] {
                std::lock_guard guard(mutex);
                changed.notify_all();
            });
        }
        std::unique_lock guard(mutex);
        changed.wait(guard, [&] { return finished || (interruptible && base::isCancelled()); });
        if (!finished) throw base::Cancelled();
        if (error) std::rethrow_exception(error);
    }
};

int LlamaServerManager::routerContextSize(std::string_view modelFileName) {
    return modelFileName.starts_with("kestrune-mini-router-") ? 4096 : 2048;
}

std::vector<std::string> LlamaServerManager::serverArguments(const std::filesystem::path& modelPath,
                                                             int port, LlamaServerMode mode,
                                                             int ctxSize) {
    // clang-format off
    std::vector<std::string> arguments = {
        "-m", modelPath.string(),
        "--port", std::to_string(port),
        "-ngl", "99",
        "--ctx-size", std::to_string(ctxSize),
        "--host", "127.0.0.1",
    };
    // clang-format on
    switch (mode) {
        case LlamaServerMode::chat:
            arguments.insert(arguments.end(),
                             {"--jinja", "--chat-template-kwargs", "{\"enable_thinking\":false}",
                              "--reasoning-budget", "0", "--parallel", "1"});
            break;
        case LlamaServerMode::embedding:
            arguments.insert(arguments.end(), {"--embeddings", "--parallel", "1"});
            break;
    }
    return arguments;
}

std::optional<std::string> LlamaServerManager::loadedModelFileName(std::string_view propsJSON) {
    const auto props = nlohmann::json::parse(propsJSON, nullptr, false);
    if (!props.is_object()) return std::nullopt;
    const auto found = props.find("model_path");
    if (found == props.end() || !found->is_string()) return std::nullopt;
    std::filesystem::path path = found->get<std::string>();
    if (!path.has_filename()) path = path.parent_path();
    std::string name = path.filename().string();
    if (name.empty()) return std::nullopt;
    return name;
}

LlamaServerManager::LlamaServerManager(std::filesystem::path modelPath, int port,
                                       std::shared_ptr<base::HttpSession> session,
                                       LlamaServerMode mode, int ctxSize, Environment environment)
    : modelPath_(std::move(modelPath)),
      port_(port),
      mode_(mode),
      ctxSize_(ctxSize),
      session_(std::move(session)),
      environment_(std::move(environment)) {}

LlamaServerManager::~LlamaServerManager() {
    stop();
    std::vector<std::shared_ptr<StartAttempt>> running;
    {
        std::lock_guard guard(lock_);
        running.swap(launched_);
    }
    for (auto& attempt : running) attempt->thread.join();
}

std::filesystem::path LlamaServerManager::logFilePath() const {
    return environment_.logsDirectory / ("llama-server-" + std::to_string(port_) + ".log");
}

std::filesystem::path LlamaServerManager::pidFilePath() const {
    return environment_.logsDirectory / ("llama-server-" + std::to_string(port_) + ".pid");
}

std::string LlamaServerManager::modelFileName() const {
    std::filesystem::path path = modelPath_;
    if (!path.has_filename()) path = path.parent_path();
    return path.filename().string();
}

void LlamaServerManager::ensureRunning() {
    std::shared_ptr<base::ChildProcess> current;
    {
        std::lock_guard guard(lock_);
        if (std::holds_alternative<Retired>(hold_)) throw LLMError::retired();
        // A child still being polled is not a running server yet: a caller that arrives
        // then joins the start instead of returning before the server answers.
        if (const auto* owned = std::get_if<Owned>(&hold_); owned && !startTask_)
            current = owned->child;
    }
    if (current) {
        if (current->isRunning()) return;
        clearProcessIf(current);
    }

    const auto attempt = acquireStartTask();
    std::exception_ptr failure;
    try {
        attempt->wait(true);
    } catch (const base::Cancelled&) {
        // Our caller gave up, or the start was stopped: either way the start task is not
        // ours to clear if it still runs.
        std::lock_guard guard(attempt->mutex);
        if (!attempt->finished) throw;
        failure = std::current_exception();
    } catch (...) {
        failure = std::current_exception();
    }
    {
        std::lock_guard guard(lock_);
        if (startTask_ == attempt) startTask_.reset();
    }
    if (failure) std::rethrow_exception(failure);
}

std::shared_ptr<LlamaServerManager::StartAttempt> LlamaServerManager::acquireStartTask() {
    std::vector<std::shared_ptr<StartAttempt>> finished;
    std::shared_ptr<StartAttempt> attempt;
    {
        std::lock_guard guard(lock_);
        if (startTask_) return startTask_;
        for (auto it = launched_.begin(); it != launched_.end();) {
            std::lock_guard attemptGuard((*it)->mutex);
            if ((*it)->finished) {
                finished.push_back(std::move(*it));
                it = launched_.erase(it);
            } else {
                ++it;
            }
        }
        attempt = std::make_shared<StartAttempt>();
        StartAttempt* raw = attempt.get();
        // The thread sees the attempt through a plain pointer: launched_ owns it until the
        // thread is joined, so the thread never drops the last reference to itself.
        attempt->thread = std::thread([this, raw] {
            base::CancellationScope scope(raw->cancellation);
            std::exception_ptr error;
            try {
                performStart();
            } catch (...) {
                error = std::current_exception();
            }
            {
                std::lock_guard guard(lock_);
                if (startTask_.get() == raw) startTask_.reset();
            }
            std::lock_guard guard(raw->mutex);
            raw->error = error;
            raw->finished = true;
            raw->changed.notify_all();
        });
        startTask_ = attempt;
        launched_.push_back(attempt);
    }
    for (auto& done : finished) done->thread.join();
    return attempt;
}

void LlamaServerManager::performStart() {
    reapStaleServerFromPreviousSession();
    if (healthCheck()) {
        const auto loaded = fetchLoadedModelFileName();
        if (loaded == modelFileName()) {
            adoptExistingServerTakingOwnershipIfOrphaned();
            return;
        }
        environment_.diagnostics.event("port " + std::to_string(port_) + " is already serving " +
                                       loaded.value_or("an unverifiable model") + " — expected " +
                                       modelFileName() +
                                       "; terminating it and spawning the correct model");
        terminateLlamaServerListeners();
    }
    spawnServer();
}

void LlamaServerManager::terminateLlamaServerListeners() {
    for (const std::int32_t pid : environment_.processes->listeningPIDs(port_)) {
        if (environment_.processes->processName(pid) != "llama-server") continue;
        killPIDWithEscalation(pid);
    }
}

void LlamaServerManager::spawnServer() {
    std::error_code exists;
    if (!std::filesystem::exists(modelPath_, exists)) throw LLMError::modelNotFound();
    const auto binary = environment_.findServerBinary();
    if (!binary) throw LLMError::binaryNotFound();

    // A fresh log per spawn: only the last run's output is kept.
    std::filesystem::create_directories(environment_.logsDirectory);
    {
        std::ofstream log(logFilePath(), std::ios::out | std::ios::trunc);
        if (!log) {
            throw std::filesystem::filesystem_error(
                "cannot create the server log", logFilePath(),
                std::error_code(errno, std::generic_category()));
        }
    }
    const base::SpawnRequest request{*binary, serverArguments(modelPath_, port_, mode_, ctxSize_),
                                     logFilePath()};
    base::checkCancellation();

    const auto child = environment_.processes->spawn(request);
    environment_.registerChild(child->pid());
    const std::uint64_t epoch = writePIDFile(child->pid());
    bool held = false;
    {
        std::lock_guard guard(lock_);
        held = holdUnlessRetired(Owned{child});
    }
    if (!held) {
        // Retired while this start was under way: the child is nobody's to keep.
        release(Owned{child}, epoch);
        throw LLMError::retired();
    }
    try {
        pollUntilHealthy(*child);
    } catch (...) {
        // failedPoll rethrows what ended the poll; a cancellation goes on as it came.
        failedPoll(child, epoch);
    }
}

void LlamaServerManager::pollUntilHealthy(base::ChildProcess& child) {
    const auto deadline = std::chrono::steady_clock::now() + environment_.timing.healthDeadline;
    while (std::chrono::steady_clock::now() < deadline) {
        // A 200 counts only when it comes from our child: a foreign server that answers
        // /health on the port while our child fails to bind it is not our start succeeding.
        // The failed-poll rules then decide whether that foreign server may be adopted.
        if (healthCheck()) {
            const auto listeners = environment_.processes->listeningPIDs(port_);
            if (std::find(listeners.begin(), listeners.end(), child.pid()) != listeners.end())
                return;
        }
        if (!child.isRunning()) throw LLMError::serverStartTimeout();
        environment_.sleep(environment_.timing.healthPollInterval);
    }
    throw LLMError::serverStartTimeout();
}

// Runs inside the catch handler of the poll: rethrows the original failure only for a
// cancellation; otherwise the port's state decides.
void LlamaServerManager::failedPoll(const std::shared_ptr<base::ChildProcess>& child,
                                    std::uint64_t epoch) {
    terminateWithEscalation(*child);
    clearProcessIf(child);
    try {
        throw;
    } catch (const base::Cancelled&) {
        removePIDFileIfEpoch(epoch);
        throw;
    } catch (...) {
    }

    try {
        if (healthCheck()) {
            const auto loaded = fetchLoadedModelFileName();
            if (loaded == modelFileName()) {
                adoptExistingServerTakingOwnershipIfOrphaned();
                return;
            }
            environment_.diagnostics.event(
                "port " + std::to_string(port_) +
                " is answering /health after our own spawn failed, but it's serving " +
                loaded.value_or("an unverifiable model") + " — expected " + modelFileName() +
                "; refusing to adopt it");
        }
    } catch (const base::Cancelled&) {
        removePIDFileIfEpoch(epoch);
        throw;
    }
    removePIDFileIfEpoch(epoch);
    if (!environment_.processes->listeningPIDs(port_).empty()) {
        throw LLMError::portOccupiedUnhealthy(port_);
    }
    throw LLMError::serverStartTimeout();
}

base::HttpResponse LlamaServerManager::get(std::string_view path) {
    base::HttpRequest request;
    request.url =
        base::Url::parse("http://127.0.0.1:" + std::to_string(port_))->appendingPath(path);
    request.timeout = environment_.timing.healthRequestTimeout;
    return session_->send(request);
}

bool LlamaServerManager::healthCheck() {
    try {
        return get("health").status == 200;
    } catch (const base::Cancelled&) {
        throw;
    } catch (const std::exception&) {
        return false;
    }
}

std::optional<std::string> LlamaServerManager::fetchLoadedModelFileName() {
    try {
        const auto response = get("props");
        if (response.status != 200) return std::nullopt;
        return loadedModelFileName(response.body);
    } catch (const base::Cancelled&) {
        throw;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

bool LlamaServerManager::holdUnlessRetired(Hold next) {
    if (std::holds_alternative<Retired>(hold_)) return false;
    hold_ = std::move(next);
    return true;
}

void LlamaServerManager::release(const Hold& released, std::uint64_t epoch) {
    if (const auto* owned = std::get_if<Owned>(&released)) {
        terminateWithEscalation(*owned->child);
        removePIDFileIfEpoch(epoch);
    } else if (const auto* adopted = std::get_if<Adopted>(&released)) {
        killPIDWithEscalation(adopted->pid);
        removePIDFileIfEpoch(epoch);
    }
    // A guest's server stays up, with its owner's PID file.
}

void LlamaServerManager::stop() {
    Hold released;
    std::shared_ptr<StartAttempt> start;
    std::uint64_t epoch = 0;
    {
        std::lock_guard guard(lock_);
        if (!std::holds_alternative<Retired>(hold_)) released = std::exchange(hold_, Idle{});
        start = std::move(startTask_);
        startTask_.reset();
        epoch = spawnEpoch_;
    }
    if (start) start->cancellation->cancel();
    release(released, epoch);
}

void LlamaServerManager::stopAndWait() {
    std::shared_ptr<StartAttempt> start;
    {
        std::lock_guard guard(lock_);
        start = startTask_;
    }
    stop();
    if (start) {
        try {
            start->wait(false);
        } catch (...) {
            // Whatever the start ended with, a cancellation included, no longer matters.
        }
    }
    // Whatever a start took hold of meanwhile goes down with the retirement.
    Hold released;
    std::uint64_t epoch = 0;
    {
        std::lock_guard guard(lock_);
        released = std::exchange(hold_, Retired{});
        epoch = spawnEpoch_;
    }
    if (!std::holds_alternative<Retired>(released)) release(released, epoch);
}

void LlamaServerManager::clearProcessIf(const std::shared_ptr<base::ChildProcess>& child) {
    std::lock_guard guard(lock_);
    if (const auto* owned = std::get_if<Owned>(&hold_); owned && owned->child == child)
        hold_ = Idle{};
}

}  // namespace nuvrel::llm
