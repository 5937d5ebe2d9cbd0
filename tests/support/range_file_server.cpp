#include "support/range_file_server.h"

namespace nuvrel::test {

RangeFileServer::RangeFileServer(std::shared_ptr<const std::string> file, std::string host,
                                 std::function<void(httplib::Server&)> routes)
    : file_(std::move(file)) {
    server_ = std::make_unique<LoopbackServer>(
        [this, &routes](httplib::Server& server) {
            if (routes) routes(server);
            server.Get(R"(/.*\.gguf)", [this](const httplib::Request& request,
                                              httplib::Response& response) {
                // httplib would cut the body by the Range itself; this host decides alone.
                auto ranges = request.ranges;
                const_cast<httplib::Request&>(request).ranges.clear();
                HostBehaviour behaviour;
                {
                    std::lock_guard lock(mutex_);
                    behaviour = behaviour_;
                    lastPath_ = request.path;
                }
                if (behaviour.redirectTo) return response.set_redirect(*behaviour.redirectTo);
                const std::uint64_t size = file_->size();
                if (request.method == "HEAD") {
                    const auto length = behaviour.headLength.value_or(size);
                    response.set_content_provider(length, "application/octet-stream",
                                                  [](auto, auto, auto&) { return true; });
                    return;
                }
                ++getRequests_;
                std::uint64_t first = 0, last = size - 1;
                if (!ranges.empty() && !behaviour.ignoreRange) {
                    if (behaviour.answer416) {
                        response.status = 416;
                        return;
                    }
                    first = ranges[0].first;
                    if (ranges[0].second >= 0)
                        last = std::min<std::uint64_t>(ranges[0].second, size - 1);
                    response.status = 206;
                    response.set_header("Content-Range", "bytes " + std::to_string(first) + "-" +
                                                             std::to_string(last) + "/" +
                                                             std::to_string(size));
                }
                bool drop = false;
                {
                    std::lock_guard lock(mutex_);
                    if (behaviour_.dropAtOffset && first >= *behaviour_.dropAtOffset) {
                        behaviour_.dropAtOffset.reset();
                        drop = true;
                    }
                }
                const std::uint64_t length = last - first + 1;
                response.set_content_provider(
                    length, "application/octet-stream",
                    [this, first, length, drop](std::size_t offset, std::size_t count,
                                                httplib::DataSink& sink) {
                        if (drop) {
                            std::this_thread::sleep_for(std::chrono::milliseconds(300));
                            sink.write(file_->data() + first, length / 2);
                            return false;
                        }
                        sink.write(file_->data() + first + offset, count);
                        return true;
                    });
            });
        },
        std::move(host));
}

void RangeFileServer::setBehaviour(HostBehaviour behaviour) {
    std::lock_guard lock(mutex_);
    behaviour_ = std::move(behaviour);
}

}  // namespace nuvrel::test
