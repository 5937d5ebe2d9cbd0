#include "base/shared_library.h"

#include <dlfcn.h>

#include <utility>

namespace nuvrel::base {

SharedLibraryError::SharedLibraryError(Kind kind, std::string library, std::string detail)
    : kind_(kind), library_(std::move(library)), detail_(std::move(detail)) {
    description_ = (kind_ == Kind::libraryNotFound ? "library not found: " : "symbol not found: ") +
                   library_ + " (" + detail_ + ")";
}

std::string SharedLibraryError::description() const {
    return description_;
}

SharedLibrary::SharedLibrary(const std::string& name) : name_(name) {
    ::dlerror();
    handle_ = ::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* reason = ::dlerror();
        throw SharedLibraryError(SharedLibraryError::Kind::libraryNotFound, name,
                                 reason != nullptr ? reason : "");
    }
}

SharedLibrary::~SharedLibrary() {
    if (handle_ != nullptr) ::dlclose(handle_);
}

SharedLibrary::SharedLibrary(SharedLibrary&& other) noexcept
    : name_(std::move(other.name_)), handle_(std::exchange(other.handle_, nullptr)) {}

SharedLibrary& SharedLibrary::operator=(SharedLibrary&& other) noexcept {
    if (this != &other) {
        if (handle_ != nullptr) ::dlclose(handle_);
        name_ = std::move(other.name_);
        handle_ = std::exchange(other.handle_, nullptr);
    }
    return *this;
}

void* SharedLibrary::address(const char* symbol) const {
    // dlsym may rightly give null for a symbol whose value is null; no function of ours is one,
    // so null means missing.
    ::dlerror();
    void* found = ::dlsym(handle_, symbol);
    if (found == nullptr) {
        throw SharedLibraryError(SharedLibraryError::Kind::symbolNotFound, name_, symbol);
    }
    return found;
}

}  // namespace nuvrel::base
