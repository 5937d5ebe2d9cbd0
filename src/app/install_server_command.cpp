#include "app/install_server_command.h"

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <thread>

#include "app/terminal_session.h"
#include "base/cancellation.h"
#include "base/task.h"
#include "llm/llama_server_installer.h"
#include "platform/live_llm.h"

namespace nuvrel::app {
namespace {

namespace Installer = llm::LlamaServerInstaller;

// Runs `install` on a task that Ctrl-C or SIGTERM cancels, so that the build is stopped rather
// than left running without us.
std::optional<std::filesystem::path> untilInterrupted(
    const std::function<std::optional<std::filesystem::path>()>& install) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    base::Task<std::optional<std::filesystem::path>> installing(install);
    std::thread watcher([&] {
        int signal = 0;
        if (sigwait(&signals, &signal) == 0 && signal != SIGUSR1) installing.cancel();
    });
    std::optional<std::filesystem::path> result;
    std::exception_ptr failure;
    try {
        result = installing.value();
    } catch (...) {
        failure = std::current_exception();
    }
    pthread_kill(watcher.native_handle(), SIGUSR1);
    watcher.join();
    if (failure) std::rethrow_exception(failure);
    return result;
}

}  // namespace

int runInstallServerCommand(NetworkActivityLog& log, std::ostream& out, std::ostream& err) {
    auto operations =
        platform::liveInstallerOperations([&log](std::string_view host, std::string_view path) {
            log.record(std::string(host), std::string(path),
                       NetworkActivityLog::Purpose::modelDownload);
        });
    operations.runInstall = [&err](const std::filesystem::path& script) {
        err << "nuvrel: building llama-server with " << script.string()
            << " (ten minutes or more, the first time only)" << std::endl;
        platform::liveRunInstall(script, "/dev/stderr");
    };
    try {
        if (auto binary =
                untilInterrupted([&] { return Installer::installIfMissing(operations); })) {
            out << binary->string() << "\n";
            return exitResult;
        }
    } catch (const base::Cancelled&) {
        err << "nuvrel: the llama-server build was stopped" << std::endl;
        return exitCancelled;
    }
    err << "nuvrel: llama-server is missing and cannot be built here: the install script "
           "(scripts/install-llama-server.sh) was not found or did not finish"
        << std::endl;
    return exitError;
}

}  // namespace nuvrel::app
