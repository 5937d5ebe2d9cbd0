#pragma once
// A sentence-embedding model, as the chunk selector sees it. Blocks on the caller's task and
// may throw anything; the selector falls back to lexical scoring on any failure.

#include <memory>
#include <string>
#include <vector>

namespace wayfen {

class EmbeddingProvider {
public:
    virtual ~EmbeddingProvider() = default;
    // `isQuery` tells the model whether the text is the query or a passage.
    virtual std::vector<float> embed(const std::string& text, bool isQuery) const = 0;
};

using EmbeddingProviderPtr = std::shared_ptr<const EmbeddingProvider>;

}  // namespace wayfen
