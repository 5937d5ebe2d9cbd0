#include "base/sha256.h"

#include <openssl/evp.h>

#include <new>

namespace nuvrel::base {

struct Sha256::Context {
    EVP_MD_CTX* md = EVP_MD_CTX_new();
    ~Context() { EVP_MD_CTX_free(md); }
};

Sha256::Sha256() : context_(std::make_unique<Context>()) {
    if (context_->md == nullptr) throw std::bad_alloc();
    reset();
}

Sha256::~Sha256() = default;
Sha256::Sha256(Sha256&&) noexcept = default;
Sha256& Sha256::operator=(Sha256&&) noexcept = default;

void Sha256::reset() {
    if (EVP_DigestInit_ex(context_->md, EVP_sha256(), nullptr) != 1) throw std::bad_alloc();
}

void Sha256::update(std::string_view bytes) {
    if (!bytes.empty()) EVP_DigestUpdate(context_->md, bytes.data(), bytes.size());
}

std::string Sha256::hex() const {
    // Finishing a copy keeps this digest open for more bytes.
    EVP_MD_CTX* copy = EVP_MD_CTX_new();
    if (copy == nullptr || EVP_MD_CTX_copy_ex(copy, context_->md) != 1) {
        EVP_MD_CTX_free(copy);
        throw std::bad_alloc();
    }
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    EVP_DigestFinal_ex(copy, digest, &length);
    EVP_MD_CTX_free(copy);
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (unsigned int i = 0; i < length; ++i) {
        text.push_back(digits[digest[i] >> 4]);
        text.push_back(digits[digest[i] & 0xf]);
    }
    return text;
}

}  // namespace nuvrel::base
