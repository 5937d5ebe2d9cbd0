#include "app/lazy_window_system.h"

#include "core/localized_strings.h"
#include "core/user_facing_error.h"

namespace nuvrel::app {

std::shared_ptr<desktop::WindowSystem> WindowSystemOnFirstUse::get() {
    std::call_once(once_, [this] { connected_ = connect_(); });
    return connected_;
}

desktop::WindowSystem& LazyWindowSystem::connected() {
    const auto windows = shared_->get();
    if (!windows)
        throw core::UserFacingError(
            core::LocalizedStrings::strings(language_).windowNeedsX11Message);
    return *windows;
}

bool LazyWindowSystem::isTrusted() {
    return connected().isTrusted();
}
bool LazyWindowSystem::isProcessRunning(std::int32_t pid) {
    return connected().isProcessRunning(pid);
}
std::int32_t LazyWindowSystem::currentProcessID() {
    return connected().currentProcessID();
}
std::optional<desktop::FrontmostApplication> LazyWindowSystem::frontmostApplication() {
    return connected().frontmostApplication();
}
std::optional<desktop::WindowHandle> LazyWindowSystem::focusedWindow(
    std::optional<std::int32_t> pid) {
    return connected().focusedWindow(pid);
}
std::optional<desktop::Point> LazyWindowSystem::position(desktop::WindowHandle window) {
    return connected().position(window);
}
std::vector<desktop::Screen> LazyWindowSystem::screens() {
    return connected().screens();
}
std::optional<desktop::Screen> LazyWindowSystem::mainScreen() {
    return connected().mainScreen();
}
bool LazyWindowSystem::setPosition(desktop::WindowHandle window, desktop::Point topLeft) {
    return connected().setPosition(window, topLeft);
}
bool LazyWindowSystem::setSize(desktop::WindowHandle window, double width, double height) {
    return connected().setSize(window, width, height);
}
std::string LazyWindowSystem::applicationName(desktop::WindowHandle window) {
    return connected().applicationName(window);
}

}  // namespace nuvrel::app
