#pragma once
// Diagnostic lines on standard error: one writer per tag, each line written whole so that
// lines from several threads never interleave. Personal text (queries, file names, message
// bodies) never goes into a diagnostic line.

#include <string_view>

namespace nuvrel::base {

class DiagnosticWriter {
public:
    explicit constexpr DiagnosticWriter(std::string_view tag) : tag_(tag) {}
    // Writes the tag, the message and a line end in one write.
    void line(std::string_view message) const;
    constexpr std::string_view tag() const { return tag_; }

private:
    std::string_view tag_;
};

namespace diag {
// Events of the program's life: servers, models, failures.
inline constexpr DiagnosticWriter event{"[Nuvrel] "};
// Timings.
inline constexpr DiagnosticWriter latency{"[nuvrel-latency] "};
}  // namespace diag

}  // namespace nuvrel::base
