#pragma once
// Screen captures through the desktop portal (org.freedesktop.portal.Screenshot): the call
// gives a request object, whose Response signal carries the capture's address.
//
// Threading: blocks the caller's task until the response or the time-out.

#include <chrono>
#include <filesystem>

typedef struct _GDBusConnection GDBusConnection;

namespace nuvrel::platform {

// Takes a capture of the whole screen without asking and moves it to `path`. False when no
// portal runs, it refuses, or it does not respond within `timeout`: the caller then tries the
// tools.
bool portalScreenshot(GDBusConnection* bus, const std::filesystem::path& path,
                      std::chrono::milliseconds timeout);

}  // namespace nuvrel::platform
