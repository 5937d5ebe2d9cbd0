#pragma once
// A C library opened on first use instead of at every start of the program: its loading, its
// relocations and the libraries it drags in cost only the sentences that need it.

#include <exception>
#include <string>

namespace nuvrel::base {

class SharedLibraryError : public std::exception {
public:
    enum class Kind {
        // The library is not installed, or one of its own dependencies is missing.
        libraryNotFound,
        // The library is there but lacks a function the program needs (a too old version).
        symbolNotFound
    };

    SharedLibraryError(Kind kind, std::string library, std::string detail);

    Kind kind() const { return kind_; }
    // The name the program asked for ("libcurl.so.4").
    const std::string& library() const { return library_; }
    // The loader's own words, or the missing symbol.
    const std::string& detail() const { return detail_; }
    std::string description() const;
    const char* what() const noexcept override { return description_.c_str(); }

    friend bool operator==(const SharedLibraryError& a, const SharedLibraryError& b) {
        return a.kind_ == b.kind_ && a.library_ == b.library_ && a.detail_ == b.detail_;
    }

private:
    Kind kind_;
    std::string library_;
    std::string detail_;
    std::string description_;
};

// One library opened with RTLD_NOW | RTLD_LOCAL: every symbol is bound at open, so a broken
// installation shows at the first use rather than as a crash in the middle of a call.
// Closing it unloads it, so a table of functions from it lives no longer than the object.
class SharedLibrary {
public:
    // `name` is a SONAME ("libcurl.so.4") searched the loader's way, or a path. Throws
    // SharedLibraryError (libraryNotFound).
    explicit SharedLibrary(const std::string& name);
    ~SharedLibrary();
    SharedLibrary(SharedLibrary&& other) noexcept;
    SharedLibrary& operator=(SharedLibrary&& other) noexcept;
    SharedLibrary(const SharedLibrary&) = delete;
    SharedLibrary& operator=(const SharedLibrary&) = delete;

    const std::string& name() const { return name_; }

    // The function `symbol` as a pointer of the caller's type, which must be the function's own.
    // Throws SharedLibraryError (symbolNotFound).
    template <typename Function>
    void resolve(Function*& into, const char* symbol) const {
        into = reinterpret_cast<Function*>(address(symbol));
    }

private:
    void* address(const char* symbol) const;

    std::string name_;
    void* handle_ = nullptr;
};

// The function table `Api` (a struct that holds a SharedLibrary and resolves its members in its
// constructor), made on the first call and thread-safely shared. Never destroyed: what a library
// hands out (GLib types, cached time zones, transfers on detached threads, digests in use while
// statics are destroyed) may outlive main. A constructor that throws is tried again next call.
template <typename Api>
const Api& openedOnce() {
    static const Api* const api = new Api();
    return *api;
}

}  // namespace nuvrel::base
