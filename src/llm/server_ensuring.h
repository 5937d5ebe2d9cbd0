#pragma once
// What a chat call needs of the manager of a llama-server child: that the server is up, and
// which model file it serves.

#include <filesystem>

namespace nuvrel::llm {

class ServerEnsuring {
public:
    virtual ~ServerEnsuring() = default;

    // Returns once the server answers healthy, starting it if need be; blocks on the caller's
    // task. Throws LLMError, or base::Cancelled when the task is asked to stop.
    virtual void ensureRunning() = 0;
    // The model file the server loads.
    virtual std::filesystem::path modelPath() const = 0;
};

}  // namespace nuvrel::llm
