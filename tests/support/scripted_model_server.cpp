#include "support/scripted_model_server.h"

#include <nlohmann/json.hpp>

namespace nuvrel::test {

namespace {

constexpr std::string_view unknownReply =
    R"({"intent":"system.unknown","slots":{},"confidence":0})";

// The last user message of an OpenAI-style chat request; empty when there is none.
std::string userMessage(const std::string& body) {
    const auto request = nlohmann::json::parse(body, nullptr, false);
    if (!request.is_object() || !request.contains("messages")) return {};
    std::string found;
    for (const auto& message : request["messages"]) {
        if (message.value("role", "") == "user") found = message.value("content", "");
    }
    return found;
}

}  // namespace

ScriptedModelServer::ScriptedModelServer(std::map<std::string, std::string> replies,
                                         std::string modelFileName)
    : replies_(std::move(replies)),
      modelFileName_(std::move(modelFileName)),
      server_([this](httplib::Server& server) {
          server.Get("/health", [](const httplib::Request&, httplib::Response& response) {
              response.set_content(R"({"status":"ok"})", "application/json");
          });
          server.Get("/props", [this](const httplib::Request&, httplib::Response& response) {
              const nlohmann::json props{{"model_path", "/models/" + modelFileName_}};
              response.set_content(props.dump(), "application/json");
          });
          server.Post("/v1/chat/completions", [this](const httplib::Request& request,
                                                     httplib::Response& response) {
              const std::string sentence = userMessage(request.body);
              std::string content(unknownReply);
              {
                  std::lock_guard guard(mutex_);
                  sentences_.push_back(sentence);
                  if (const auto found = replies_.find(sentence); found != replies_.end())
                      content = found->second;
              }
              const nlohmann::json reply{
                  {"object", "chat.completion"},
                  {"choices",
                   {{{"index", 0},
                     {"finish_reason", "stop"},
                     {"message", {{"role", "assistant"}, {"content", content}}}}}}};
              response.set_content(reply.dump(), "application/json");
          });
      }) {}

std::vector<std::string> ScriptedModelServer::sentences() const {
    std::lock_guard guard(mutex_);
    return sentences_;
}

}  // namespace nuvrel::test
