#pragma once
// The real llama-server that scripts/install-llama-server.sh builds and the tiny model that
// tools/make-test-model.sh writes, both in the cache of the account running the tests (never
// the temporary home of a test), or where NUVREL_TEST_LLAMA_SERVER and NUVREL_TEST_MODEL say.
// ./test makes both before it runs the suite.

#include <gtest/gtest.h>

#include <filesystem>

namespace nuvrel::test {

std::filesystem::path realServerBinary();
std::filesystem::path tinyTestModel();
// The same with mean pooling declared, for the server's embedding mode.
std::filesystem::path tinyEmbeddingTestModel();

// Fails, saying how to get them, when either is missing: a test of the real server never
// passes by skipping.
::testing::AssertionResult realServerAvailable();

}  // namespace nuvrel::test
