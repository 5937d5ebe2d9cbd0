#include "wayfen/duckduckgo_request_pacer.h"

#include <utility>

namespace wayfen {

namespace {

PacerPtr makeShared(double seconds) {
    return std::make_shared<DuckDuckGoRequestPacer>(std::chrono::duration<double>(seconds));
}

}  // namespace

DuckDuckGoRequestPacer::DuckDuckGoRequestPacer(std::chrono::duration<double> minimumInterval,
                                               Clock clock, nuvrel::base::SleepFn sleepFn)
    : minimumInterval_(minimumInterval), clock_(std::move(clock)), sleepFn_(std::move(sleepFn)) {}

void DuckDuckGoRequestPacer::waitForTurn() {
    std::optional<std::chrono::steady_clock::time_point> last;
    {
        std::lock_guard lock(mutex_);
        last = lastTurnStartedAt_;
    }
    if (last) {
        const auto remaining = minimumInterval_ - (clock_() - *last);
        if (remaining.count() > 0) {
            // Not under the lock: a sleeping task must not hold up the others' bookkeeping.
            sleepFn_(std::chrono::duration_cast<std::chrono::nanoseconds>(remaining));
        }
    }
    std::lock_guard lock(mutex_);
    lastTurnStartedAt_ = clock_();
}

PacerPtr DuckDuckGoRequestPacer::shared() {
    static const PacerPtr pacer = makeShared(2.0);
    return pacer;
}

PacerPtr DuckDuckGoRequestPacer::tavilyShared() {
    static const PacerPtr pacer = makeShared(1.0);
    return pacer;
}

PacerPtr DuckDuckGoRequestPacer::firecrawlShared() {
    static const PacerPtr pacer = makeShared(1.0);
    return pacer;
}

PacerPtr DuckDuckGoRequestPacer::searxngShared() {
    static const PacerPtr pacer = makeShared(2.0);
    return pacer;
}

PacerPtr DuckDuckGoRequestPacer::wikipediaShared() {
    static const PacerPtr pacer = makeShared(0.3);
    return pacer;
}

}  // namespace wayfen
