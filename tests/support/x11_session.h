#pragma once
// A private X11 session for one test: Xvfb (1280x800) on a free display with openbox managing it,
// and DISPLAY pointing there while the object lives.

#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

#include "support/environment_override.h"
#include "support/helper_process.h"

namespace nuvrel::test {

class X11Session {
public:
    // The programs are found on PATH.
    X11Session() {
        server_ = std::make_unique<HelperProcess>(
            std::vector<std::string>{"/usr/bin/env", "Xvfb", "-displayfd", "1", "-screen", "0",
                                     "1280x800x24", "-nolisten", "tcp"});
        const auto number = server_->readLine(std::chrono::seconds(10));
        if (!number) return;
        display_ = ":" + *number;
        environment_.set("DISPLAY", display_.c_str());
        environment_.set("XDG_SESSION_TYPE", "x11");
        windowManager_ =
            std::make_unique<HelperProcess>(std::vector<std::string>{"/usr/bin/env", "openbox"});
        // openbox is ready once it names itself on the root window.
        for (int i = 0; i < 100 && std::system("xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null"
                                               " | grep -q 'window id'") != 0;
             ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }

    bool ready() const { return !display_.empty(); }

private:
    std::unique_ptr<HelperProcess> server_;
    EnvironmentOverride environment_;
    std::unique_ptr<HelperProcess> windowManager_;
    std::string display_;
};

}  // namespace nuvrel::test
