#include "llm/scripted_llama_server.h"

#include <nlohmann/json.hpp>

namespace nuvrel::llm::test {

std::string chatReply(const std::string& content) {
    nlohmann::json reply = {
        {"choices",
         {{{"finish_reason", "stop"},
           {"index", 0},
           {"message", {{"role", "assistant"}, {"content", content}}}}}},
        {"created", 1735689600},
        {"model", "qwen2.5-1.5b-instruct"},
        {"system_fingerprint", "b5000-abcdef01"},
        {"object", "chat.completion"},
        {"usage", {{"completion_tokens", 12}, {"prompt_tokens", 410}, {"total_tokens", 422}}},
        {"id", "chatcmpl-1a2b3c"},
        {"timings", {{"prompt_n", 410}, {"prompt_ms", 81.2}, {"predicted_n", 12}}},
    };
    return reply.dump();
}

ScriptedReply loadingReply() {
    return {503, R"({"error":{"code":503,"message":"Loading model","type":"unavailable_error"}})"};
}

ScriptedReply contextTooLongReply() {
    return {400,
            R"({"error":{"code":400,"message":"the request exceeds the available context size, )"
            R"(try increasing it","type":"exceed_context_size_error","n_prompt_tokens":5000,)"
            R"("n_ctx":4096}})"};
}

ScriptedLlamaServer::ScriptedLlamaServer(std::vector<ScriptedReply> script)
    : script_(std::move(script)) {
    server_ = std::make_unique<nuvrel::test::LoopbackServer>([this](httplib::Server& routes) {
        const auto handle = [this](const httplib::Request& request, httplib::Response& response) {
            ScriptedReply reply;
            {
                std::lock_guard lock(mutex_);
                received_.push_back({request.method, request.path,
                                     request.get_header_value("Content-Type"), request.body});
                const std::size_t index = std::min(received_.size(), script_.size()) - 1;
                reply = script_[index];
                arrived_.notify_all();
            }
            if (reply.delay.count() > 0 && !server_->pause(reply.delay)) return;
            response.status = reply.status;
            if (!reply.body.empty()) response.set_content(reply.body, "application/json");
        };
        // Head and body go out in two writes; without this, the second waits for the client's
        // delayed acknowledgement on a reused connection (40 ms a reply).
        routes.set_tcp_nodelay(true);
        routes.Post(".*", handle);
        routes.Get(".*", handle);
    });
}

std::string ScriptedLlamaServer::baseURL() const {
    return server_->url("");
}

std::vector<ReceivedRequest> ScriptedLlamaServer::requests() const {
    std::lock_guard lock(mutex_);
    return received_;
}

std::size_t ScriptedLlamaServer::requestCount() const {
    std::lock_guard lock(mutex_);
    return received_.size();
}

bool ScriptedLlamaServer::waitForRequests(std::size_t count, std::chrono::milliseconds wait) const {
    std::unique_lock lock(mutex_);
    return arrived_.wait_for(lock, wait, [&] { return received_.size() >= count; });
}

}  // namespace nuvrel::llm::test
