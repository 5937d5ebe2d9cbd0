#pragma once
// A helper program that lives exactly as long as the panel: started with the panel, stopped
// (SIGTERM, then SIGKILL after two seconds) when the panel ends, and told by the kernel to end
// if the panel dies without a word (PR_SET_PDEATHSIG).
//
// Threading: the GUI thread.

#include <QProcess>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "base/diagnostics.h"

namespace nuvrel::panel {

// The command-line program `nuvrel` beside this one: in the same folder once installed, or in
// its own folder of the build tree; nothing when neither is there.
std::optional<std::filesystem::path> companionCommandLineProgram(
    const std::filesystem::path& panelProgram);

class ResidentChild {
public:
    ResidentChild(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                  base::Diagnostics diagnostics);
    ~ResidentChild();
    ResidentChild(const ResidentChild&) = delete;
    ResidentChild& operator=(const ResidentChild&) = delete;

    // The child's process id while it runs, else 0.
    qint64 processId() const { return process_.processId(); }

private:
    QProcess process_;
    base::Diagnostics diagnostics_;
};

}  // namespace nuvrel::panel
