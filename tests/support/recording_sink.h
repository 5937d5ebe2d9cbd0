#pragma once
// A diagnostic sink that keeps every line, for tests that check what the program reports.

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "base/diagnostics.h"

namespace nuvrel::test {

class RecordingSink final : public base::DiagnosticSink {
public:
    void writeLine(std::string_view line) override {
        std::lock_guard lock(mutex_);
        text_.append(line).push_back('\n');
    }
    // Every line so far, each with its line end, as standard error would have shown them.
    std::string text() const {
        std::lock_guard lock(mutex_);
        return text_;
    }
    // The lines so far, and forgets them.
    std::string take() {
        std::lock_guard lock(mutex_);
        return std::exchange(text_, {});
    }

private:
    mutable std::mutex mutex_;
    std::string text_;
};

// Diagnostics into a new recording sink, and the sink to read them back.
struct RecordedDiagnostics {
    std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
    base::Diagnostics diagnostics{sink};
};

}  // namespace nuvrel::test
