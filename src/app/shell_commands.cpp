#include "app/shell_commands.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "base/text.h"
#include "llm/model_catalog.h"
#include "llm/model_file_manager.h"
#include "llm/model_resolution.h"
#include "llm/server_binary.h"
#include "pipeline/pipeline.h"
#include "platform/linux/session_bus.h"
#include "platform/live_process_control.h"

namespace nuvrel::app {

int runExplainCommand(const std::string& sentence, bool json, core::AppLanguage language,
                      const AppState::MakePipeline& makePipeline, std::ostream& out) {
    const auto made = makePipeline(language);
    const auto* pipeline = dynamic_cast<const pipeline::Pipeline*>(made.get());
    const pipeline::CascadeClaim claim =
        pipeline ? pipeline->explain(sentence) : pipeline::CascadeClaim{};
    if (json) {
        out << claim.toJson().dump() << '\n';
    } else {
        out << claim.step << ' ' << claim.matcher;
        if (claim.step != pipeline::CascadeClaim::routerStep) out << ' ' << claim.value.dump();
        out << '\n';
    }
    return 0;
}

namespace {

std::string osRelease() {
    std::ifstream file("/etc/os-release");
    std::string line;
    while (std::getline(file, line)) {
        if (!line.starts_with("PRETTY_NAME=")) continue;
        std::string value = line.substr(12);
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
            value = value.substr(1, value.size() - 2);
        return value;
    }
    return "Linux";
}

bool onPath(const char* program) {
    const char* path = std::getenv("PATH");
    std::string_view rest = path ? path : "";
    while (!rest.empty()) {
        const auto colon = rest.find(':');
        const std::filesystem::path folder(rest.substr(0, colon));
        if (!folder.empty() && ::access((folder / program).c_str(), X_OK) == 0) return true;
        rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
    }
    return false;
}

bool hasVariable(const char* name) {
    const char* value = std::getenv(name);
    return value && *value;
}

}  // namespace

DiagnosticsReport::Probes liveDiagnosticsProbes(std::string appVersion,
                                                std::shared_ptr<base::HttpSession> session,
                                                std::shared_ptr<const NetworkActivityLog> log) {
    DiagnosticsReport::Probes probes;
    probes.appVersion = [appVersion] { return appVersion; };
    probes.osVersion = [] {
        utsname name{};
        if (::uname(&name) != 0) throw DiagnosticsProbeError();
        return osRelease() + " (Linux " + name.release + ")";
    };
    probes.isAppleSilicon = [] {
        utsname name{};
        if (::uname(&name) != 0) throw DiagnosticsProbeError();
        const std::string_view machine = name.machine;
        return machine == "arm64" || machine == "aarch64";
    };
    probes.totalRAMBytes = [] {
        const long pages = ::sysconf(_SC_PHYS_PAGES);
        const long size = ::sysconf(_SC_PAGESIZE);
        if (pages <= 0 || size <= 0) throw DiagnosticsProbeError();
        return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(size);
    };
    probes.installedModelFileNames = [] {
        return llm::ModelCatalog::installedModelFileNames(llm::modelsDirectory(),
                                                          llm::liveListContents);
    };
    probes.modelFileSizeBytes = [](const std::string& fileName) {
        return static_cast<std::int64_t>(
            std::filesystem::file_size(llm::modelsDirectory() / fileName));
    };
    probes.modelsDirectoryPath = [] { return llm::modelsDirectory().string(); };
    probes.serverBinaryPath = []() -> std::optional<std::string> {
        if (auto path = llm::findServerBinaryPath()) return path->string();
        return std::nullopt;
    };
    probes.portIsHealthy = [session](int port) {
        base::HttpRequest request;
        request.url = *base::Url::parse("http://127.0.0.1:" + std::to_string(port) + "/health");
        request.timeout = std::chrono::milliseconds(1000);
        try {
            return session->send(request).status == 200;
        } catch (const base::HttpError&) {
            return false;
        }
    };
    probes.listeningServerPIDs = [processes = platform::liveProcessControl()](int port) {
        return processes->listeningPIDs(port);
    };
    probes.recentNetworkActivity = [log] {
        std::vector<std::pair<std::string, NetworkActivityLog::Purpose>> entries;
        for (const auto& entry : log->recentEntries(10))
            entries.emplace_back(entry.host, entry.purpose);
        return entries;
    };
    probes.isAccessibilityTrusted = [] {
        const char* type = std::getenv("XDG_SESSION_TYPE");
        return hasVariable("DISPLAY") && !(type && std::string_view(type) == "wayland");
    };
    probes.isNotificationsAuthorized = [] {
        const auto bus = platform::SessionBus::connect();
        if (!bus) throw DiagnosticsProbeError();
        return bus->serviceAvailable("org.freedesktop.Notifications");
    };
    return probes;
}

bool liveCopyToClipboard(const std::string& text) {
    const char* command = nullptr;
    if (hasVariable("WAYLAND_DISPLAY") && onPath("wl-copy")) {
        command = "wl-copy";
    } else if (hasVariable("DISPLAY") && onPath("xclip")) {
        command = "xclip -selection clipboard";
    } else if (hasVariable("DISPLAY") && onPath("xsel")) {
        command = "xsel --clipboard --input";
    }
    if (!command) return false;
    FILE* pipe = ::popen(command, "w");
    if (!pipe) return false;
    const bool written = std::fwrite(text.data(), 1, text.size(), pipe) == text.size();
    return ::pclose(pipe) == 0 && written;
}

}  // namespace nuvrel::app
