#pragma once
// Keeps one provider under its rate limit: each request first waits for its turn, at least
// minimumInterval after the previous turn started. The state is behind a mutex that is never
// held across the sleep, so two tasks arriving in one interval may wake together.

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "base/sleep.h"

namespace wayfen {

class DuckDuckGoRequestPacer {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    explicit DuckDuckGoRequestPacer(std::chrono::duration<double> minimumInterval,
                                    Clock clock = std::chrono::steady_clock::now,
                                    nuvrel::base::SleepFn sleepFn = nuvrel::base::liveSleep);

    // Blocks on the caller's task until this request may go. Throws what the sleep throws
    // (base::Cancelled), leaving the state as it was.
    void waitForTurn();

    // One per provider for the whole process, made on first use.
    static std::shared_ptr<DuckDuckGoRequestPacer> shared();           // 2.0 s
    static std::shared_ptr<DuckDuckGoRequestPacer> tavilyShared();     // 1.0 s
    static std::shared_ptr<DuckDuckGoRequestPacer> firecrawlShared();  // 1.0 s
    static std::shared_ptr<DuckDuckGoRequestPacer> searxngShared();    // 2.0 s
    static std::shared_ptr<DuckDuckGoRequestPacer> wikipediaShared();  // 0.3 s

private:
    const std::chrono::duration<double> minimumInterval_;
    const Clock clock_;
    const nuvrel::base::SleepFn sleepFn_;
    std::mutex mutex_;
    std::optional<std::chrono::steady_clock::time_point> lastTurnStartedAt_;
};

using PacerPtr = std::shared_ptr<DuckDuckGoRequestPacer>;

}  // namespace wayfen
