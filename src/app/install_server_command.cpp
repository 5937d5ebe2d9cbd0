#include "app/install_server_command.h"

#include "app/interruptible.h"
#include "app/terminal_session.h"
#include "base/cancellation.h"
#include "llm/llama_server_installer.h"
#include "platform/live_llm.h"

namespace nuvrel::app {
namespace {

namespace Installer = llm::LlamaServerInstaller;

// Stopped by Ctrl-C or SIGTERM rather than left running without us.
std::optional<std::filesystem::path> untilInterrupted(
    const std::function<std::optional<std::filesystem::path>()>& install) {
    std::optional<std::filesystem::path> result;
    runUntilInterrupted([&] { result = install(); });
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
