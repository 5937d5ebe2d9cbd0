#include "platform/posix/document_files.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/pdf_writer.h"
#include "support/temporary_home.h"

namespace nuvrel::platform {
namespace {

namespace fs = std::filesystem;

TEST(DocumentFiles, ReadsPdfInReadingOrderAndTextAsUtf8) {
    nuvrel::test::TemporaryHome home;
    const fs::path dir = home.path();
    nuvrel::test::writePdf(dir / "text.pdf", {{{72, 720, "Quarterly revenue grew."}},
                                              {{72, 720, "Second page closes."}}});
    // Two columns of three lines each, side by side on the same baselines.
    nuvrel::test::PdfPage columns;
    for (int line = 0; line < 3; ++line) {
        columns.push_back({72, 700.0 - 14 * line, "left" + std::to_string(line)});
        columns.push_back({340, 700.0 - 14 * line, "right" + std::to_string(line)});
    }
    nuvrel::test::writePdf(dir / "columns.PDF", {columns});
    nuvrel::test::writePdf(dir / "scanned.pdf", {{}});
    std::ofstream(dir / "notes.md") << "# Plan\n한국어 본문";
    std::ofstream(dir / "latin1.txt") << "caf\xe9";
    std::ofstream(dir / "broken.pdf") << "%PDF-1.4 nothing else";

    const auto text = liveExtractText((dir / "text.pdf").string());
    ASSERT_TRUE(text);
    EXPECT_NE(text->find("Quarterly revenue grew."), std::string::npos);
    EXPECT_LT(text->find("grew."), text->find("Second page"));

    const std::string twoColumns = liveExtractText((dir / "columns.PDF").string()).value_or("");
    EXPECT_LT(twoColumns.find("left2"), twoColumns.find("right0")) << twoColumns;

    EXPECT_EQ(liveExtractText((dir / "notes.md").string()), "# Plan\n한국어 본문");
    for (const char* unreadable : {"scanned.pdf", "latin1.txt", "broken.pdf", "missing.txt"})
        EXPECT_EQ(liveExtractText((dir / unreadable).string()), std::nullopt) << unreadable;
}

TEST(DocumentFiles, FindsByPathThenByNameBelowTheRoots) {
    nuvrel::test::TemporaryHome home;
    const fs::path docs = home.path() / "Documents";
    fs::create_directories(docs / "2026" / "q3");
    fs::create_directories(home.path() / ".hidden");
    std::ofstream(docs / "2026" / "q3" / "Report.PDF") << "x";
    std::ofstream(docs / "annual report draft.txt") << "x";
    std::ofstream(home.path() / ".hidden" / "secret.txt") << "x";
    std::ofstream(home.path() / "top.txt") << "x";
    const DocumentSearch search = DocumentSearch::userFolders();

    const auto pathOf = [&](std::string_view name) {
        const auto hit = liveFindFile(name, search);
        return hit ? hit->path : std::string("none");
    };
    EXPECT_EQ(pathOf("report.pdf"), (docs / "2026" / "q3" / "Report.PDF").string());
    EXPECT_EQ(pathOf("draft"), (docs / "annual report draft.txt").string());
    EXPECT_EQ(pathOf("~/top.txt"), (home.path() / "top.txt").string());
    EXPECT_EQ(pathOf("secret.txt"), "none");
    DocumentSearch shallow = search;
    shallow.maxDepth = 2;
    EXPECT_EQ(pathOf("nothing.pdf"), "none");
    EXPECT_EQ(liveFindFile("report.pdf", shallow), std::nullopt);
}

}  // namespace
}  // namespace nuvrel::platform
