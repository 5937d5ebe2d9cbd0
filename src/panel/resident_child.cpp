#include "panel/resident_child.h"

#include <sys/prctl.h>

#include <csignal>

namespace nuvrel::panel {

std::optional<std::filesystem::path> companionCommandLineProgram(
    const std::filesystem::path& panelProgram) {
    const auto folder = panelProgram.parent_path();
    for (const auto& candidate : {folder / "nuvrel", folder.parent_path() / "nuvrel" / "nuvrel"}) {
        std::error_code error;
        if (std::filesystem::is_regular_file(candidate, error)) return candidate;
    }
    return std::nullopt;
}

ResidentChild::ResidentChild(const std::filesystem::path& program,
                             const std::vector<std::string>& arguments,
                             base::Diagnostics diagnostics)
    : diagnostics_(std::move(diagnostics)) {
    QStringList list;
    for (const auto& argument : arguments) list << QString::fromStdString(argument);
    process_.setProgram(QString::fromStdString(program.string()));
    process_.setArguments(list);
    process_.setProcessChannelMode(QProcess::ForwardedChannels);
    // The panel blocks SIGTERM and SIGINT for its signal descriptor; the child must not inherit
    // that mask, or it could not be stopped.
    process_.setChildProcessModifier([] {
        sigset_t none;
        sigemptyset(&none);
        pthread_sigmask(SIG_SETMASK, &none, nullptr);
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    });
    process_.start();
    if (!process_.waitForStarted(2000))
        diagnostics_.event("could not start " + program.filename().string() + ": " +
                           process_.errorString().toStdString());
}

ResidentChild::~ResidentChild() {
    if (process_.state() == QProcess::NotRunning) return;
    process_.terminate();
    if (!process_.waitForFinished(2000)) {
        process_.kill();
        process_.waitForFinished(1000);
    }
}

}  // namespace nuvrel::panel
