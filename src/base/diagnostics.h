#pragma once
// Diagnostic lines, one each with a tag, into one sink that the program makes at the top and
// hands down; tests hand down a recording one. Personal text (queries, file names, message
// bodies) never goes into a diagnostic line.

#include <memory>
#include <string_view>

namespace nuvrel::base {

class DiagnosticSink {
public:
    virtual ~DiagnosticSink() = default;
    // One whole line, its tag included and its line end not. Called from any thread.
    virtual void writeLine(std::string_view line) = 0;
};

// Standard error, each line in one write, so that lines from several threads never interleave.
std::shared_ptr<DiagnosticSink> standardErrorSink();

// Writes tagged lines into a sink. A plain value, cheap to copy; safe to share across threads
// when its sink is.
class Diagnostics {
public:
    // Into standard error.
    Diagnostics();
    explicit Diagnostics(std::shared_ptr<DiagnosticSink> sink);

    // "[Nuvrel] ": events of the program's life: servers, models, failures.
    void event(std::string_view message) const;
    // "[nuvrel-latency] ": timings.
    void latency(std::string_view message) const;
    // A line under a tag of its own, such as a debug hook's.
    void line(std::string_view tag, std::string_view message) const;

private:
    std::shared_ptr<DiagnosticSink> sink_;
};

}  // namespace nuvrel::base
