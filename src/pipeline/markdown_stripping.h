#pragma once
// Plain text from the Markdown that models like to write: headings, bold, italics, code spans
// and links lose their markup and keep their words.

#include <string>
#include <string_view>

#include "base/regex.h"

namespace nuvrel::pipeline::MarkdownStripping {

const base::Regex& headingPattern();           // "^#{1,6}\s+", anchors at line starts
const base::Regex& boldPattern();              // "**text**"
const base::Regex& underscoreBoldPattern();    // "__text__"
const base::Regex& italicPattern();            // "*text*", not part of "**"
const base::Regex& underscoreItalicPattern();  // "_text_", not part of "__"
const base::Regex& codeSpanPattern();          // "`code`"
const base::Regex& linkPattern();              // "[text](target)"

// Removes heading marks, then replaces bold, underscore bold, italic, underscore italic, code
// spans and links, in that order, by their text. Text without Markdown comes back unchanged.
std::string plainText(std::string_view from);

}  // namespace nuvrel::pipeline::MarkdownStripping
