#pragma once
// Writes small PDF files for tests and benchmarks: pages of Helvetica text lines placed
// where the test says, so that a text, a two-column and an empty document can be made
// without a tool.

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace nuvrel::test {

struct PdfLine {
    double x = 72;
    double y = 720;
    std::string text;  // ASCII without parentheses or backslashes
};
using PdfPage = std::vector<PdfLine>;

inline void writePdf(const std::filesystem::path& path, const std::vector<PdfPage>& pages) {
    std::vector<std::string> objects = {"<< /Type /Catalog /Pages 2 0 R >>", "",
                                        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"};
    std::string kids;
    for (const PdfPage& page : pages) {
        std::string content;
        for (const PdfLine& line : page) {
            char head[64];
            std::snprintf(head, sizeof head, "BT /F1 11 Tf %.1f %.1f Td (", line.x, line.y);
            content += head + line.text + ") Tj ET\n";
        }
        const std::size_t contentsNumber = objects.size() + 2;
        objects.push_back(
            "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] /Resources << "
            "/Font << /F1 3 0 R >> >> /Contents " +
            std::to_string(contentsNumber) + " 0 R >>");
        kids += std::to_string(objects.size()) + " 0 R ";
        objects.push_back("<< /Length " + std::to_string(content.size()) + " >>\nstream\n" +
                          content + "endstream");
    }
    objects[1] =
        "<< /Type /Pages /Kids [" + kids + "] /Count " + std::to_string(pages.size()) + " >>";
    std::string file = "%PDF-1.4\n";
    std::vector<std::size_t> offsets;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        offsets.push_back(file.size());
        file += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const std::size_t xref = file.size();
    file += "xref\n0 " + std::to_string(objects.size() + 1) + "\n0000000000 65535 f \n";
    for (std::size_t offset : offsets) {
        char entry[32];
        std::snprintf(entry, sizeof entry, "%010zu 00000 n \n", offset);
        file += entry;
    }
    file += "trailer\n<< /Size " + std::to_string(objects.size() + 1) +
            " /Root 1 0 R >>\nstartxref\n" + std::to_string(xref) + "\n%%EOF\n";
    std::ofstream(path, std::ios::binary) << file;
}

}  // namespace nuvrel::test
