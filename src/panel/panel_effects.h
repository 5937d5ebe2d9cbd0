#pragma once
// What a card's actions do outside the program, injected so that tests can record them.
// Called on the main thread.

#include <functional>
#include <string>

namespace nuvrel::panel {

struct PanelEffects {
    // A local file with the desktop's default handler.
    std::function<void(const std::string& path)> openFile;
    // A file selected in the file manager (its folder, where no file manager answers).
    std::function<void(const std::string& path)> revealFile;
    // An address in the browser or its registered handler.
    std::function<void(const std::string& address)> openURL;
    std::function<void(const std::string& text)> copyText;

    // The desktop's own: xdg default handlers, the FileManager1 service, the clipboard.
    static PanelEffects live();
};

}  // namespace nuvrel::panel
