#include "platform/linux/detached_timer_center.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <stdexcept>
#include <system_error>

#include "base/files.h"
#include "base/text.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "llm/pid_file_text.h"

namespace nuvrel::platform {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view pidSuffix = ".pid";
constexpr std::string_view notificationService = "org.freedesktop.Notifications";

fs::path pidFile(const fs::path& folder, std::string_view identifier) {
    return folder / (std::string(identifier) + std::string(pidSuffix));
}

// Whether the process runs and is the helper of this identifier (not a reused PID).
bool isHelperOf(pid_t pid, std::string_view identifier) {
    const auto commandLine = base::readFile("/proc/" + std::to_string(pid) + "/cmdline");
    return commandLine && commandLine->find(std::string(identifier) + '\0') != std::string::npos &&
           commandLine->find(std::string(timerHelperVerb) + '\0') != std::string::npos;
}

// Digits of a number without the allocator, for the forked child.
std::size_t decimal(long value, char* out) {
    char reversed[24];
    std::size_t n = 0;
    do {
        reversed[n++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value > 0);
    for (std::size_t i = 0; i < n; ++i) out[i] = reversed[n - 1 - i];
    return n;
}

// Runs in the intermediate child after fork: only async-signal-safe calls.
void writePidFileAfterFork(const char* temporary, const char* target, pid_t pid) {
    const int fd = ::open(temporary, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0) return;
    char text[24];
    const std::size_t length = decimal(pid, text);
    text[length] = '\n';
    const bool written = ::write(fd, text, length + 1) == static_cast<ssize_t>(length + 1);
    ::close(fd);
    if (written) ::rename(temporary, target);
}

}  // namespace

DetachedTimerCenter::DetachedTimerCenter(core::AppLanguage language,
                                         std::shared_ptr<SessionBus> bus, fs::path timersFolder,
                                         fs::path helperProgram)
    : language_(language),
      bus_(std::move(bus)),
      timersFolder_(std::move(timersFolder)),
      helperProgram_(std::move(helperProgram)) {}

void DetachedTimerCenter::scheduleNotification(const std::string& identifier,
                                               const std::string& title, const std::string& body,
                                               std::chrono::seconds interval) {
    if (!bus_ || !bus_->serviceAvailable(notificationService)) {
        const auto& strings = core::LocalizedStrings::strings(language_);
        throw core::UserFacingError(strings.notificationServiceUnavailableMessage,
                                    strings.notificationServiceUnavailableRecovery, false);
    }
    fs::create_directories(timersFolder_);
    const auto due = std::chrono::system_clock::now() + interval;
    const std::string dueMillis = std::to_string(
        std::chrono::duration_cast<std::chrono::milliseconds>(due.time_since_epoch()).count());

    // Everything the children need is made before fork.
    const std::string program = helperProgram_.string();
    std::vector<std::string> args = {
        program, std::string(timerHelperVerb), identifier, dueMillis, title, body};
    std::vector<char*> argv;
    for (std::string& arg : args) argv.push_back(arg.data());
    argv.push_back(nullptr);
    const std::string target = pidFile(timersFolder_, identifier).string();
    const std::string temporary = target + ".tmp";

    const pid_t child = ::fork();
    if (child < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (child == 0) {
        // A session of its own, and a grandchild that no terminal or parent can take down.
        ::setsid();
        const pid_t helper = ::fork();
        if (helper == 0) {
            const int null = ::open("/dev/null", O_RDWR);
            ::dup2(null, STDIN_FILENO);
            ::dup2(null, STDOUT_FILENO);
            ::dup2(null, STDERR_FILENO);
            ::close_range(3, ~0U, 0);
            sigset_t none;
            sigemptyset(&none);
            ::sigprocmask(SIG_SETMASK, &none, nullptr);
            ::execv(argv[0], argv.data());
            ::_exit(127);
        }
        if (helper < 0) ::_exit(1);
        writePidFileAfterFork(temporary.c_str(), target.c_str(), helper);
        ::_exit(0);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || !fs::exists(target))
        throw std::runtime_error("the timer helper could not be started");
}

int DetachedTimerCenter::cancelPendingNotifications(std::string_view identifierPrefix) {
    int count = 0;
    std::error_code error;
    for (fs::directory_iterator it(timersFolder_, error), end; !error && it != end;
         it.increment(error)) {
        const std::string name = it->path().filename().string();
        if (!name.ends_with(pidSuffix) || !name.starts_with(identifierPrefix)) continue;
        const std::string identifier = name.substr(0, name.size() - pidSuffix.size());
        const auto text = base::readFile(it->path());
        // The server's PID reader: a number past 32 bits must not wrap onto another process.
        const auto pid = text ? llm::PIDFileText::parsePID(base::text::trim(*text)) : std::nullopt;
        if (pid && *pid > 0 && isHelperOf(*pid, identifier) && ::kill(*pid, SIGTERM) == 0) ++count;
        std::error_code ignored;
        fs::remove(it->path(), ignored);
    }
    return count;
}

int runTimerHelper(const std::vector<std::string>& args, const fs::path& timersFolder) {
    if (args.size() != 4) return 2;
    const std::string& identifier = args[0];
    const long long dueMillis = std::strtoll(args[1].c_str(), nullptr, 10);
    const timespec due{static_cast<time_t>(dueMillis / 1000),
                       static_cast<long>(dueMillis % 1000) * 1'000'000};
    // Wall-clock time, so that a suspended machine still rings at the time that was said.
    while (::clock_nanosleep(CLOCK_REALTIME, TIMER_ABSTIME, &due, nullptr) == EINTR) {
    }
    const auto bus = SessionBus::connect();
    const bool shown = bus && bus->notify("Nuvrel", args[2], args[3]);
    std::error_code ignored;
    fs::remove(pidFile(timersFolder, identifier), ignored);
    return shown ? 0 : 1;
}

}  // namespace nuvrel::platform
