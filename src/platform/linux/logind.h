#pragma once
// Sleep and the session lock through logind (org.freedesktop.login1) on the system bus.
//
// Threading: each call blocks up to 5 s on the caller's task and opens its own connection;
// safe from any thread.

#include <optional>
#include <string>

namespace nuvrel::platform {

class Logind {
public:
    enum class Outcome {
        done,
        // No bus, or no logind on it.
        unavailable,
        // logind answered with an error (e.g. not allowed).
        failed,
    };

    // No address: the system bus. Tests point it at a private bus.
    explicit Logind(std::optional<std::string> busAddress = std::nullopt)
        : busAddress_(std::move(busAddress)) {}

    // Suspend, interactively: logind may ask the user's agent for authorization.
    Outcome suspend() const;
    // Locks the session of $XDG_SESSION_ID, or the caller's own session without one.
    Outcome lockSession() const;

private:
    Outcome callManager(const char* method, void* arguments) const;
    std::optional<std::string> busAddress_;
};

}  // namespace nuvrel::platform
