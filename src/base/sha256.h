#pragma once
// SHA-256 on OpenSSL's libcrypto, fed piece by piece, so that a download can be digested
// while its bytes arrive instead of in a second pass over the file.

#include <memory>
#include <string>
#include <string_view>

namespace nuvrel::base {

class Sha256 {
public:
    // The first digest opens libcrypto; throws SharedLibraryError where it is not installed.
    Sha256();
    ~Sha256();
    Sha256(Sha256&&) noexcept;
    Sha256& operator=(Sha256&&) noexcept;
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    void update(std::string_view bytes);
    // 64 lower-case hexadecimal digits of what was fed so far; the digest goes on unchanged.
    std::string hex() const;
    // Starts again from nothing.
    void reset();

private:
    struct Context;
    std::unique_ptr<Context> context_;
};

}  // namespace nuvrel::base
