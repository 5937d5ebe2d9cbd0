#pragma once
// The error of all of local inference: the chat client, the server manager and the backends.

#include <exception>
#include <string>

namespace nuvrel::llm {

class LLMError : public std::exception {
public:
    enum class Kind {
        portOccupiedUnhealthy,  // port
        http,                   // status
        invalidRequest,         // text
        invalidResponse,        // text
        binaryNotFound,
        modelNotFound,
        serverStartTimeout,
        inputTooLong,
        emptyResponse,
        retired,
    };

    static LLMError portOccupiedUnhealthy(int port) {
        return LLMError(Kind::portOccupiedUnhealthy, port, {});
    }
    static LLMError http(int status) { return LLMError(Kind::http, status, {}); }
    static LLMError invalidRequest(std::string text) {
        return LLMError(Kind::invalidRequest, 0, std::move(text));
    }
    static LLMError invalidResponse(std::string text) {
        return LLMError(Kind::invalidResponse, 0, std::move(text));
    }
    static LLMError binaryNotFound() { return LLMError(Kind::binaryNotFound, 0, {}); }
    static LLMError modelNotFound() { return LLMError(Kind::modelNotFound, 0, {}); }
    static LLMError serverStartTimeout() { return LLMError(Kind::serverStartTimeout, 0, {}); }
    static LLMError inputTooLong() { return LLMError(Kind::inputTooLong, 0, {}); }
    static LLMError emptyResponse() { return LLMError(Kind::emptyResponse, 0, {}); }
    static LLMError retired() { return LLMError(Kind::retired, 0, {}); }

    Kind kind() const { return kind_; }
    // The port of portOccupiedUnhealthy or the status of http; 0 otherwise.
    int code() const { return code_; }
    // The text of invalidRequest and invalidResponse; empty otherwise.
    const std::string& text() const { return text_; }

    // A technical description, e.g. "http(503)" or "invalidRequest(jsonSchema is not valid UTF-8)".
    std::string description() const;
    const char* what() const noexcept override { return description_.c_str(); }

    friend bool operator==(const LLMError& a, const LLMError& b) {
        return a.kind_ == b.kind_ && a.code_ == b.code_ && a.text_ == b.text_;
    }

private:
    LLMError(Kind kind, int code, std::string text);

    Kind kind_;
    int code_;
    std::string text_;
    std::string description_;
};

}  // namespace nuvrel::llm
