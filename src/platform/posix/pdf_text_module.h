#pragma once
// The boundary of the PDF text module: poppler and the score of libraries it brings are loaded
// only when a PDF is read, not at every start of the program. The module exports these two
// C functions; the program opens it with dlopen.

extern "C" {

// The UTF-8 text of the first `maxPages` pages, pages joined by a line feed, in a buffer that
// nuvrel_pdf_text_free releases; null for a file that will not open or is encrypted.
char* nuvrel_pdf_text(const char* path, int maxPages);
void nuvrel_pdf_text_free(char* text);
}

namespace nuvrel::platform {

inline constexpr const char* pdfTextModuleName = "libnuvrel_pdf_text.so";

}  // namespace nuvrel::platform
