#include "base/shared_library.h"

#include <gtest/gtest.h>

namespace nuvrel::base {
namespace {

TEST(SharedLibrary, NamesTheMissingLibraryOrFunction) {
    try {
        SharedLibrary missing("libnuvrel-no-such-library.so.7");
        FAIL() << "opened a library that does not exist";
    } catch (const SharedLibraryError& error) {
        EXPECT_EQ(error.kind(), SharedLibraryError::Kind::libraryNotFound);
        EXPECT_EQ(error.library(), "libnuvrel-no-such-library.so.7");
        EXPECT_NE(error.description().find("libnuvrel-no-such-library.so.7"), std::string::npos);
    }

    const SharedLibrary c("libc.so.6");
    std::size_t (*length)(const char*) = nullptr;
    c.resolve(length, "strlen");
    EXPECT_EQ(length("four"), 4u);
    int (*absent)() = nullptr;
    EXPECT_THROW(c.resolve(absent, "nuvrel_no_such_function"), SharedLibraryError);
}

}  // namespace
}  // namespace nuvrel::base
