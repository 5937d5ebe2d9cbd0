#pragma once
// A loopback stand-in for llama-server's chat endpoint: answers each request with the next
// reply of a script (the last one repeats) and keeps what it received.

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "support/loopback_server.h"

namespace nuvrel::llm::test {

struct ScriptedReply {
    int status = 200;
    std::string body;
    // Held back this long before answering (cut short when the server stops).
    std::chrono::milliseconds delay{0};
};

struct ReceivedRequest {
    std::string method;
    std::string path;
    std::string contentType;
    std::string body;
};

// A reply as llama-server writes it, with its usual extra keys around the content.
std::string chatReply(const std::string& content);
// llama-server's 503 while the model loads, and its 400 for a prompt beyond the context.
ScriptedReply loadingReply();
ScriptedReply contextTooLongReply();

class ScriptedLlamaServer {
public:
    explicit ScriptedLlamaServer(std::vector<ScriptedReply> script);

    // "http://127.0.0.1:<port>", the base URL a backend is given.
    std::string baseURL() const;
    std::vector<ReceivedRequest> requests() const;
    std::size_t requestCount() const;
    // Whether `count` requests arrived within `wait`.
    bool waitForRequests(std::size_t count, std::chrono::milliseconds wait) const;

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable arrived_;
    std::vector<ScriptedReply> script_;
    std::vector<ReceivedRequest> received_;
    // Last, so that it stops before the state its handlers use goes away.
    std::unique_ptr<nuvrel::test::LoopbackServer> server_;
};

}  // namespace nuvrel::llm::test
