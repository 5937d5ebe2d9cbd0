// Who owns the server on the port: the PID file, the stale-server step, adoption, and the
// signals that bring a server down.

#include <charconv>
#include <thread>

#include "base/diagnostics.h"
#include "base/files.h"
#include "llm/llama_server_manager.h"
#include "llm/pid_file_text.h"

namespace nuvrel::llm {

namespace {

constexpr std::string_view serverProcessName = "llama-server";

}  // namespace

std::optional<std::vector<std::string>> LlamaServerManager::readPIDFileFields() const {
    const auto text = base::readFile(pidFilePath());
    if (!text) return std::nullopt;
    return PIDFileText::fields(*text);
}

void LlamaServerManager::reapOrphanFromPreviousSessionIfAny() {
    reapStaleServerFromPreviousSession();
}

void LlamaServerManager::reapStaleServerFromPreviousSession() {
    auto& processes = *environment_.processes;
    const auto fields = readPIDFileFields();
    if (!fields || fields->size() < 2) return;
    const auto owner = PIDFileText::parsePID((*fields)[0]);
    const auto child = PIDFileText::parsePID((*fields)[1]);
    if (!owner || !child || *owner < 1 || *child < 1) return;

    // Only a certainly dead owner opens the way; EPERM means someone we cannot see.
    if (processes.signal(*owner, base::Signal::probe) != base::SignalResult::noSuchProcess) {
        return;
    }
    if (processes.signal(*child, base::Signal::probe) != base::SignalResult::delivered) {
        removePIDFileIfStillOwnedBy(*owner);
        return;
    }
    // A reused ID belongs to an unrelated program: forget the record, send nothing.
    if (processes.processName(*child) != serverProcessName) {
        removePIDFileIfStillOwnedBy(*owner);
        return;
    }
    if (processes.listeningPIDs(port_) != std::vector<std::int32_t>{*child}) return;
    killPIDWithEscalation(*child);
    removePIDFileIfStillOwnedBy(*owner);
}

void LlamaServerManager::adoptExistingServerTakingOwnershipIfOrphaned() {
    auto& processes = *environment_.processes;
    {
        std::lock_guard guard(lock_);
        if (std::holds_alternative<Retired>(hold_)) return;
        // A server adopted before stays ours: its PID file names us as the owner by now.
        if (!std::holds_alternative<Adopted>(hold_)) hold_ = Guest{};
    }
    if (const auto fields = readPIDFileFields(); fields && fields->size() >= 2) {
        if (const auto owner = PIDFileText::parsePID((*fields)[0]); owner && *owner >= 1) {
            // A live owner, or one we cannot probe: we are its guest.
            if (processes.signal(*owner, base::Signal::probe) !=
                base::SignalResult::noSuchProcess) {
                return;
            }
        }
    }
    const auto listeners = processes.listeningPIDs(port_);
    if (listeners.size() != 1) return;
    const std::int32_t pid = listeners.front();
    if (processes.processName(pid) != serverProcessName) return;

    // Not our child, so the crash reaper does not learn of it.
    {
        std::lock_guard guard(lock_);
        if (!holdUnlessRetired(Adopted{pid})) return;
    }
    writePIDFile(pid);
    environment_.diagnostics.event(
        "adopted an ORPHANED llama-server (pid " + std::to_string(pid) + ") on port " +
        std::to_string(port_) + " and took ownership — it will now be stopped with this session");
}

std::uint64_t LlamaServerManager::writePIDFile(std::int32_t childPID) {
    std::uint64_t epoch = 0;
    {
        std::lock_guard guard(lock_);
        epoch = ++spawnEpoch_;
    }
    try {
        base::writeFileAtomically(pidFilePath(), std::to_string(environment_.processes->ownPID()) +
                                                     ":" + std::to_string(childPID) + ":" +
                                                     modelFileName());
    } catch (const std::exception&) {
        // Without the record the next session cannot reap this server; nothing else breaks.
    }
    return epoch;
}

void LlamaServerManager::removePIDFileIfEpoch(std::uint64_t epoch) {
    {
        std::lock_guard guard(lock_);
        if (spawnEpoch_ != epoch) return;  // a newer spawn's record
    }
    std::error_code ignored;
    std::filesystem::remove(pidFilePath(), ignored);
}

void LlamaServerManager::removePIDFileIfStillOwnedBy(std::int32_t owner) {
    const auto fields = readPIDFileFields();
    if (!fields || fields->empty() || PIDFileText::parsePID(fields->front()) != owner) return;
    std::error_code ignored;
    std::filesystem::remove(pidFilePath(), ignored);
}

// The waits below are plain sleeps, not cancellable ones: they run when a start was
// cancelled, and a stop that gives up half-way would leave the child running.
void LlamaServerManager::terminateWithEscalation(base::ChildProcess& child) {
    const auto& timing = environment_.timing;
    if (child.isRunning()) {
        child.signal(base::Signal::terminate);
        const auto deadline = std::chrono::steady_clock::now() + timing.terminateGrace;
        while (child.isRunning() && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(timing.signalPollInterval);
        }
        if (child.isRunning()) child.signal(base::Signal::kill);
    }
    // Also when the child died on its own: a stale slot in the crash table could later point
    // at a reused ID.
    environment_.unregisterChild(child.pid());
    const auto deadline = std::chrono::steady_clock::now() + timing.exitWait;
    while (std::chrono::steady_clock::now() < deadline && child.isRunning() &&
           environment_.processes->signal(child.pid(), base::Signal::probe) ==
               base::SignalResult::delivered) {
        std::this_thread::sleep_for(timing.signalPollInterval);
    }
}

void LlamaServerManager::killPIDWithEscalation(std::int32_t pid) {
    auto& processes = *environment_.processes;
    const auto& timing = environment_.timing;
    if (processes.signal(pid, base::Signal::terminate) != base::SignalResult::delivered) return;
    const auto deadline = std::chrono::steady_clock::now() + timing.terminateGrace;
    while (std::chrono::steady_clock::now() < deadline) {
        if (processes.signal(pid, base::Signal::probe) != base::SignalResult::delivered) return;
        std::this_thread::sleep_for(timing.signalPollInterval);
    }
    processes.signal(pid, base::Signal::kill);
}

}  // namespace nuvrel::llm
