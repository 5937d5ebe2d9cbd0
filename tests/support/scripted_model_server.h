#pragma once
// A loopback stand-in for the router's llama-server: it answers /health and /props as a
// healthy server with `modelFileName` loaded (so the program uses it as a guest), and each
// chat completion with the scripted reply for the user message, the sentence being routed.
// Run the program with NUVREL_DEBUG_ROUTER_PORT set to port().

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "support/loopback_server.h"

namespace nuvrel::test {

class ScriptedModelServer {
public:
    // `replies`: sentence → the model's reply text (the router's JSON object). A sentence
    // without one is answered as a system.unknown at confidence 0.
    ScriptedModelServer(std::map<std::string, std::string> replies, std::string modelFileName);

    int port() const { return server_.port(); }
    // The user messages of the chat completions received, in order.
    std::vector<std::string> sentences() const;

private:
    std::map<std::string, std::string> replies_;
    std::string modelFileName_;
    mutable std::mutex mutex_;
    std::vector<std::string> sentences_;
    LoopbackServer server_;  // last: its handlers use the members above
};

}  // namespace nuvrel::test
