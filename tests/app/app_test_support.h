#pragma once
// Stand-ins for run-control tests: a defaults store in memory, a pipeline that answers from
// a script and can hold a query until the test releases it, and a recorder of every phase
// that AppState publishes.

#include <functional>
#include <latch>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <variant>
#include <vector>

#include "app/app_state.h"
#include "app/settings_storing.h"
#include "base/main_queue.h"
#include "pipeline/pipeline_running.h"

namespace nuvrel::app::test {

class InMemorySettingsStore final : public SettingsStoring {
public:
    std::optional<std::string> string(std::string_view key) const override {
        if (onRead) onRead(key);
        return get<std::string>(key);
    }
    // Told of each text read, for tests of when a setting is looked at.
    std::function<void(std::string_view key)> onRead;
    std::optional<std::int64_t> integer(std::string_view key) const override {
        return get<std::int64_t>(key);
    }
    std::optional<double> number(std::string_view key) const override { return get<double>(key); }
    std::optional<bool> boolean(std::string_view key) const override { return get<bool>(key); }
    bool contains(std::string_view key) const override {
        std::lock_guard lock(mutex_);
        return values_.find(key) != values_.end();
    }
    void set(std::string_view key, SettingValue value) override {
        std::lock_guard lock(mutex_);
        values_.insert_or_assign(std::string(key), std::move(value));
    }
    void remove(std::string_view key) override {
        std::lock_guard lock(mutex_);
        if (const auto found = values_.find(key); found != values_.end()) values_.erase(found);
    }

private:
    template <class T>
    std::optional<T> get(std::string_view key) const {
        std::lock_guard lock(mutex_);
        const auto found = values_.find(key);
        if (found == values_.end()) return std::nullopt;
        if (const auto* value = std::get_if<T>(&found->second)) return *value;
        return std::nullopt;
    }

    mutable std::mutex mutex_;
    std::map<std::string, SettingValue, std::less<>> values_;
};

// A one-shot barrier a scripted query waits on; it ignores cancellation on purpose, so that
// a late outcome really arrives after the run was superseded.
class Gate {
public:
    void open() { latch_.count_down(); }
    void wait() { latch_.wait(); }
    bool isOpen() const { return latch_.try_wait(); }

private:
    std::latch latch_{1};
};

class ScriptedPipeline final : public pipeline::PipelineRunning {
public:
    using Reply = std::function<core::PipelineOutcome(std::string_view query)>;

    explicit ScriptedPipeline(base::MainQueue& queue) : queue_(queue) {}

    // Queries without a reply of their own answer with a calculation that shows the query.
    void reply(std::string query, Reply reply) { replies_[std::move(query)] = std::move(reply); }
    // The query waits on the gate before answering; the queue is woken once it has started.
    std::shared_ptr<Gate> hold(const std::string& query) {
        auto gate = std::make_shared<Gate>();
        gates_[query] = gate;
        return gate;
    }
    void chain(std::string query, std::vector<std::string> steps) {
        chains_[std::move(query)] = std::move(steps);
    }

    core::PipelineOutcome run(std::string_view query) const override {
        {
            std::lock_guard lock(mutex_);
            started_.emplace_back(query);
        }
        queue_.wake();
        if (const auto gate = gates_.find(query); gate != gates_.end()) gate->second->wait();
        const auto reply = replies_.find(query);
        auto outcome = reply != replies_.end()
                           ? reply->second(query)
                           : core::PipelineOutcome::result(
                                 core::CapabilityResult::Calculation{std::string(query)});
        {
            std::lock_guard lock(mutex_);
            finished_.emplace_back(query);
        }
        queue_.wake();
        return outcome;
    }

    std::optional<std::vector<std::string>> decomposeIfChain(
        std::string_view query) const override {
        const auto found = chains_.find(query);
        if (found == chains_.end()) return std::nullopt;
        return found->second;
    }

    std::vector<std::string> started() const {
        std::lock_guard lock(mutex_);
        return started_;
    }
    std::vector<std::string> finished() const {
        std::lock_guard lock(mutex_);
        return finished_;
    }
    bool hasStarted(std::string_view query) const {
        std::lock_guard lock(mutex_);
        return std::find(started_.begin(), started_.end(), query) != started_.end();
    }
    // Opens every gate: a failing test must not leave a task blocked forever.
    void openAllGates() {
        for (auto& [query, gate] : gates_) gate->open();
    }

private:
    base::MainQueue& queue_;
    // Filled before the first run and only read afterwards.
    std::map<std::string, Reply, std::less<>> replies_;
    std::map<std::string, std::shared_ptr<Gate>, std::less<>> gates_;
    std::map<std::string, std::vector<std::string>, std::less<>> chains_;
    mutable std::mutex mutex_;
    mutable std::vector<std::string> started_;
    mutable std::vector<std::string> finished_;
};

// "idle", "thinking", "result:<what the card shows>", "chain:[a|b|…]" with "…" for a step
// still running.
inline std::string describe(const core::PipelineOutcome& outcome) {
    if (const auto* error = outcome.asError()) return "error:" + error->message;
    if (outcome.isCancelled()) return "cancelled";
    if (const auto* result = outcome.asResult()) {
        if (const auto* calculation = result->get<core::CapabilityResult::Calculation>()) {
            return calculation->display;
        }
        return std::string(core::caseName(*result));
    }
    return "confirm";
}

inline std::string describe(const Phase& phase) {
    switch (phase.kind()) {
        case Phase::Kind::idle:
            return "idle";
        case Phase::Kind::thinking:
            return "thinking";
        case Phase::Kind::result:
            return "result:" + describe(*phase.asResult());
        case Phase::Kind::chain: {
            std::string text = "chain:[";
            for (const auto& step : *phase.asChain()) {
                if (step.id > 0) text += "|";
                text += step.outcome ? describe(*step.outcome) : "…";
            }
            return text + "]";
        }
    }
    return {};
}

}  // namespace nuvrel::app::test
