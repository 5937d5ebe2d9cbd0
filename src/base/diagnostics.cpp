#include "base/diagnostics.h"

#include <unistd.h>

#include <cerrno>
#include <string>

namespace nuvrel::base {
namespace {

class StandardErrorSink final : public DiagnosticSink {
public:
    void writeLine(std::string_view line) override {
        std::string text;
        text.reserve(line.size() + 1);
        text.append(line).push_back('\n');
        const char* data = text.data();
        std::size_t left = text.size();
        while (left > 0) {
            const ssize_t written = ::write(STDERR_FILENO, data, left);
            if (written < 0 && errno == EINTR) continue;
            if (written <= 0) return;  // nowhere to report a failure to report
            data += written;
            left -= static_cast<std::size_t>(written);
        }
    }
};

}  // namespace

std::shared_ptr<DiagnosticSink> standardErrorSink() {
    return std::make_shared<StandardErrorSink>();
}

Diagnostics::Diagnostics() : sink_(standardErrorSink()) {}

Diagnostics::Diagnostics(std::shared_ptr<DiagnosticSink> sink) : sink_(std::move(sink)) {}

void Diagnostics::event(std::string_view message) const {
    line("[Nuvrel] ", message);
}

void Diagnostics::latency(std::string_view message) const {
    line("[nuvrel-latency] ", message);
}

void Diagnostics::line(std::string_view tag, std::string_view message) const {
    std::string text;
    text.reserve(tag.size() + message.size());
    text.append(tag).append(message);
    sink_->writeLine(text);
}

}  // namespace nuvrel::base
