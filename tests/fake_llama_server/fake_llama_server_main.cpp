// A stand-in for llama-server in process tests, built under the name "llama-server" so that
// /proc/<pid>/comm reads as the real one's. It takes the real server's arguments, prints them
// on standard output (and a line on standard error), and serves /health and /props on
// --host:--port. Its behaviour comes from an optional file beside the model, "<model>.fake",
// of "key=value" lines. Every chat completion answers {"fake":true}.
//   unhealthy_ms=<n>    /health answers 503 for this long after start, then 200
//   ignore_sigterm=1    SIGTERM is ignored, so only SIGKILL ends it
//   exit_code=<n>       exit at once with this code, serving nothing
//   props_model_path=<p> what /props reports instead of the -m path

#include <httplib.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>

int main(int argc, char** argv) {
    std::string host = "127.0.0.1";
    int port = 8080;
    std::string model;
    std::string arguments;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        arguments += (i > 1 ? " " : "") + word;
        if (i + 1 < argc) {
            if (word == "--port") port = std::atoi(argv[i + 1]);
            if (word == "--host") host = argv[i + 1];
            if (word == "-m") model = argv[i + 1];
        }
    }
    std::printf("arguments: %s\n", arguments.c_str());
    std::fflush(stdout);
    std::fprintf(stderr, "fake llama-server %d starting\n", static_cast<int>(getpid()));

    std::map<std::string, std::string> behaviour;
    std::ifstream file(model + ".fake");
    for (std::string line; std::getline(file, line);) {
        const auto equals = line.find('=');
        if (equals != std::string::npos)
            behaviour[line.substr(0, equals)] = line.substr(equals + 1);
    }
    if (behaviour.count("exit_code")) return std::atoi(behaviour["exit_code"].c_str());
    if (behaviour["ignore_sigterm"] == "1") ::signal(SIGTERM, SIG_IGN);
    const auto healthyAt = std::chrono::steady_clock::now() +
                           std::chrono::milliseconds(std::atoi(behaviour["unhealthy_ms"].c_str()));
    const std::string reported =
        behaviour.count("props_model_path") ? behaviour["props_model_path"] : model;

    httplib::Server server;
    server.Get("/health", [&](const httplib::Request&, httplib::Response& response) {
        if (std::chrono::steady_clock::now() < healthyAt) {
            response.status = 503;
            response.set_content(R"({"error":{"code":503,"message":"Loading model"}})",
                                 "application/json");
        } else {
            response.set_content(R"({"status":"ok"})", "application/json");
        }
    });
    server.Get("/props", [&](const httplib::Request&, httplib::Response& response) {
        std::string escaped;
        for (char c : reported) {
            if (c == '"' || c == '\\') escaped += '\\';
            escaped += c;
        }
        response.set_content("{\"model_path\":\"" + escaped + "\",\"total_slots\":1}",
                             "application/json");
    });
    server.Post("/v1/chat/completions", [](const httplib::Request&, httplib::Response& response) {
        response.set_content(
            R"({"choices":[{"message":{"role":"assistant","content":"{\"fake\":true}"}}]})",
            "application/json");
    });
    if (!server.listen(host, port)) {
        std::fprintf(stderr, "couldn't bind HTTP server socket, hostname: %s, port: %d\n",
                     host.c_str(), port);
        return 1;
    }
    return 0;
}
