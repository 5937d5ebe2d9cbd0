// The PDF text module, loaded on the first PDF a sentence asks about.
#include "platform/posix/pdf_text_module.h"

#include <poppler/cpp/poppler-document.h>
#include <poppler/cpp/poppler-global.h>
#include <poppler/cpp/poppler-page.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <string>

extern "C" char* nuvrel_pdf_text(const char* path, int maxPages) {
    try {
        static const bool silenced = [] {
            poppler::set_debug_error_function([](const std::string&, void*) {}, nullptr);
            return true;
        }();
        (void)silenced;
        std::unique_ptr<poppler::document> document(poppler::document::load_from_file(path));
        if (!document || document->is_locked()) return nullptr;
        std::string text;
        const int pages = std::min(document->pages(), maxPages);
        for (int index = 0; index < pages; ++index) {
            std::unique_ptr<poppler::page> page(document->create_page(index));
            if (!page) continue;
            const poppler::byte_array utf8 =
                page->text(poppler::rectf(), poppler::page::non_raw_non_physical_layout).to_utf8();
            if (!text.empty() && !utf8.empty()) text += '\n';
            text.append(utf8.begin(), utf8.end());
        }
        char* copy = static_cast<char*>(std::malloc(text.size() + 1));
        if (copy) std::memcpy(copy, text.c_str(), text.size() + 1);
        return copy;
    } catch (const std::exception&) {
        // No exception crosses the C boundary; an unreadable file is no text.
        return nullptr;
    }
}

extern "C" void nuvrel_pdf_text_free(char* text) {
    std::free(text);
}
