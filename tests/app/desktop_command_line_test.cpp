// `nuvrel ask` on the files and applications of a throwaway home: the sentence in, the file in
// the Trash or the application started out.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <fstream>
#include <thread>

#include "base/files.h"
#include "base/time_text.h"
#include "llm/model_resolution.h"
#include "support/environment_override.h"
#include "support/helper_process.h"
#include "support/pdf_writer.h"
#include "support/scripted_model_server.h"
#include "support/temporary_home.h"

namespace nuvrel::app {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

test::Finished ask(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {NUVREL_PATH, "ask", "--no-network"});
    return test::runToEnd(std::move(arguments), 30s);
}

std::optional<std::string> awaited(const fs::path& file) {
    for (int i = 0; i < 100; ++i) {
        if (auto text = base::readFile(file); text && !text->empty() && text->back() == '\n')
            return text;
        std::this_thread::sleep_for(50ms);
    }
    return std::nullopt;
}

TEST(DesktopCommandLine, FindsDeletesToTheTrashAndOpensApplicationsAndAddresses) {
    test::TemporaryHome home;
    const fs::path& h = home.path();
    base::writeFileAtomically(h / "Documents/invoice-march.pdf", "%PDF");
    base::writeFileAtomically(h / "Desktop/report.pdf", "%PDF");
    const fs::path applications = h / ".local/share/applications";
    base::writeFileAtomically(applications / "marker.desktop",
                              "[Desktop Entry]\nType=Application\nName=Marker Tool\nExec=sh -c "
                              "\"echo started > " +
                                  (h / "started").string() + "\"\n");
    base::writeFileAtomically(applications / "browser.desktop",
                              "[Desktop Entry]\nType=Application\nName=Browser\nNoDisplay=true\n"
                              "MimeType=x-scheme-handler/https;\nExec=sh -c \"echo %u > " +
                                  (h / "opened").string() + "\"\n");
    base::writeFileAtomically(h / ".config/mimeapps.list",
                              "[Default Applications]\nx-scheme-handler/https=browser.desktop\n");

    const auto found = ask({"where is my invoice-march.pdf"});
    EXPECT_EQ(found.exitCode, 0);
    EXPECT_NE(found.output.find((h / "Documents/invoice-march.pdf").string()), std::string::npos)
        << found.output;

    const auto unconfirmed = ask({"delete report.pdf on the desktop"});
    EXPECT_EQ(unconfirmed.exitCode, 3);
    EXPECT_TRUE(fs::exists(h / "Desktop/report.pdf"));

    const std::string today = base::formatTime(std::chrono::system_clock::now(), "%Y-%m-%d", false);
    const auto deleted = ask({"--yes", "delete report.pdf on the desktop"});
    EXPECT_EQ(deleted.exitCode, 0) << deleted.output;
    EXPECT_FALSE(fs::exists(h / "Desktop/report.pdf"));
    EXPECT_EQ(base::readFile(h / ".local/share/Trash/files/report.pdf"), "%PDF");
    const auto info = base::readFile(h / ".local/share/Trash/info/report.pdf.trashinfo");
    ASSERT_TRUE(info);
    EXPECT_NE(info->find("Path=" + (h / "Desktop/report.pdf").string() + "\n"), std::string::npos);
    EXPECT_NE(info->find("DeletionDate=" + today + "T"), std::string::npos) << *info;

    EXPECT_EQ(ask({"open marker tool"}).exitCode, 0);
    EXPECT_EQ(awaited(h / "started"), "started\n");
    EXPECT_EQ(ask({"open example.com"}).exitCode, 0);
    EXPECT_EQ(awaited(h / "opened"), "https://example.com\n");
}

TEST(DesktopCommandLine, ARoutedFileSearchListsThePdfsByNameOrContentAndNoTextFile) {
    test::TemporaryHome home;
    const fs::path& h = home.path();
    for (const char* pdf : {"Documents/invoice-march.pdf", "Downloads/Invoice 2025.PDF"})
        base::writeFileAtomically(h / pdf, "%PDF");
    test::writePdf(h / "Documents/invoice-scan", {{{.text = "total 120"}}});
    base::writeFileAtomically(h / "Documents/invoice-notes.txt", "%PDF-1.4 pasted");
    base::writeFileAtomically(h / "Documents/invoice-draft", "plain words");
    const test::ScriptedModelServer server(
        {{"find invoice pdf",
          R"({"intent":"finder.search","slots":{"keyword":"invoice","file_type":"pdf"},)"
          R"("confidence":0.9})"}},
        std::string(llm::interimModelFileName));
    const test::EnvironmentOverride port("NUVREL_DEBUG_ROUTER_PORT",
                                         std::to_string(server.port()).c_str());

    const auto found = ask({"find invoice pdf"});
    EXPECT_EQ(found.exitCode, 0) << found.output;
    EXPECT_EQ(server.sentences(), std::vector<std::string>{"find invoice pdf"});
    for (const char* pdf :
         {"Documents/invoice-march.pdf", "Downloads/Invoice 2025.PDF", "Documents/invoice-scan"})
        EXPECT_NE(found.output.find((h / pdf).string()), std::string::npos) << pdf << found.output;
    for (const char* other : {"invoice-notes.txt", "invoice-draft"})
        EXPECT_EQ(found.output.find(other), std::string::npos) << other << found.output;
}

}  // namespace
}  // namespace nuvrel::app
