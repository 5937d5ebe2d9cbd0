#pragma once
// The scoring rule of application names, shared by the plain scan and the index so that both
// rank alike. Names and terms are in comparable form (AppLaunchCapability::comparableName).

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nuvrel::desktop {

struct ScoredTerm {
    std::string text;
    std::size_t characters = 0;
    std::vector<std::string> words;
};

struct ScoredApp {
    double score = 0;
    std::string name;  // the name that scored, comparable form
    std::size_t index = 0;
};

std::vector<ScoredTerm> scoredTerms(const std::vector<std::string>& terms);

// 1.0 equal; 0.9 one begins with the other (terms of more than 2 characters); 0.8 the term's
// words in a row among the name's (terms of 3 characters and more); else 0.
double nameScore(std::string_view name, const ScoredTerm& term);

// Whether `a` ranks before `b`: higher score, then the shorter name, then alphabetically, then
// the earlier application.
bool isBetter(const ScoredApp& a, const ScoredApp& b);

// Code points, as a length that costs no segmentation.
std::size_t codePointCount(std::string_view text);

}  // namespace nuvrel::desktop
