#include "base/sha256.h"

#include <openssl/evp.h>

#include <new>

#include "base/shared_library.h"

namespace nuvrel::base {

namespace {

// libcrypto, opened on the first digest: mapped at start it alone costs thousands of relocations.
struct CryptoLibrary {
    CryptoLibrary() : library("libcrypto.so.3") {
        library.resolve(contextNew, "EVP_MD_CTX_new");
        library.resolve(contextFree, "EVP_MD_CTX_free");
        library.resolve(contextCopy, "EVP_MD_CTX_copy_ex");
        library.resolve(sha256, "EVP_sha256");
        library.resolve(digestInit, "EVP_DigestInit_ex");
        library.resolve(digestUpdate, "EVP_DigestUpdate");
        library.resolve(digestFinal, "EVP_DigestFinal_ex");
    }

    SharedLibrary library;
    decltype(&::EVP_MD_CTX_new) contextNew = nullptr;
    decltype(&::EVP_MD_CTX_free) contextFree = nullptr;
    decltype(&::EVP_MD_CTX_copy_ex) contextCopy = nullptr;
    decltype(&::EVP_sha256) sha256 = nullptr;
    decltype(&::EVP_DigestInit_ex) digestInit = nullptr;
    decltype(&::EVP_DigestUpdate) digestUpdate = nullptr;
    decltype(&::EVP_DigestFinal_ex) digestFinal = nullptr;
};

const CryptoLibrary& crypto() {
    return openedOnce<CryptoLibrary>();
}

}  // namespace

struct Sha256::Context {
    EVP_MD_CTX* md = crypto().contextNew();
    ~Context() { crypto().contextFree(md); }
};

Sha256::Sha256() : context_(std::make_unique<Context>()) {
    if (context_->md == nullptr) throw std::bad_alloc();
    reset();
}

Sha256::~Sha256() = default;
Sha256::Sha256(Sha256&&) noexcept = default;
Sha256& Sha256::operator=(Sha256&&) noexcept = default;

void Sha256::reset() {
    if (crypto().digestInit(context_->md, crypto().sha256(), nullptr) != 1) throw std::bad_alloc();
}

void Sha256::update(std::string_view bytes) {
    if (!bytes.empty()) crypto().digestUpdate(context_->md, bytes.data(), bytes.size());
}

std::string Sha256::hex() const {
    // Finishing a copy keeps this digest open for more bytes.
    EVP_MD_CTX* copy = crypto().contextNew();
    if (copy == nullptr || crypto().contextCopy(copy, context_->md) != 1) {
        crypto().contextFree(copy);
        throw std::bad_alloc();
    }
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    crypto().digestFinal(copy, digest, &length);
    crypto().contextFree(copy);
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (unsigned int i = 0; i < length; ++i) {
        text.push_back(digits[digest[i] >> 4]);
        text.push_back(digits[digest[i] & 0xf]);
    }
    return text;
}

}  // namespace nuvrel::base
