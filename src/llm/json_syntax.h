#pragma once
// A fast yes-or-no check of JSON text, for the hot path of the chat client, where the same
// few kilobytes are checked twice per request and a full parse would cost more than the rest
// of the request together. It accepts what nlohmann's parser accepts (RFC 8259, UTF-8
// checked inside strings, a leading byte-order mark allowed, numbers beyond the range of a
// double refused), except that a NUL byte is an error here and the end of the input there.
// Callers ask the parser itself on a "no", for its verdict and its description.

#include <string_view>

namespace nuvrel::llm::JsonSyntax {

// Whether `text` is one JSON value with optional white space around it. Never recurses, so
// any depth of nesting is safe.
bool isWellFormed(std::string_view text);

}  // namespace nuvrel::llm::JsonSyntax
