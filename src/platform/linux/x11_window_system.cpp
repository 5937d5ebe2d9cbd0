#include "platform/linux/x11_window_system.h"

#include <signal.h>
#include <unistd.h>
#include <xcb/randr.h>
#include <xcb/xcb.h>
#include <xcb/xcb_ewmh.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace nuvrel::platform {
namespace {

// A rectangle in root coordinates, y down.
struct Box {
    std::int32_t x = 0, y = 0, width = 0, height = 0;
};

Box intersection(const Box& a, const Box& b) {
    const std::int32_t left = std::max(a.x, b.x), top = std::max(a.y, b.y);
    const std::int32_t right = std::min(a.x + a.width, b.x + b.width);
    const std::int32_t bottom = std::min(a.y + a.height, b.y + b.height);
    if (right <= left || bottom <= top) return a;
    return {left, top, right - left, bottom - top};
}

struct Extents {
    std::int32_t left = 0, right = 0, top = 0, bottom = 0;
};

constexpr std::uint32_t northWestGravity = 1;
// Bits 8 to 11 of _NET_MOVERESIZE_WINDOW's first datum: which of x, y, width, height count.
constexpr std::uint32_t moveFlags = (1u << 8) | (1u << 9);
constexpr std::uint32_t sizeFlags = (1u << 10) | (1u << 11);

}  // namespace

struct X11WindowSystem::Connection {
    xcb_connection_t* c = nullptr;
    xcb_ewmh_connection_t ewmh{};
    int screenNumber = 0;
    xcb_window_t root = 0;
    Box rootBox{};

    ~Connection() {
        xcb_ewmh_connection_wipe(&ewmh);
        if (c) xcb_disconnect(c);
    }

    bool alive(xcb_window_t window) const {
        xcb_get_geometry_reply_t* geometry =
            xcb_get_geometry_reply(c, xcb_get_geometry(c, window), nullptr);
        std::free(geometry);
        return geometry != nullptr;
    }

    std::optional<std::int32_t> pidOf(xcb_window_t window) const {
        std::uint32_t pid = 0;
        if (!xcb_ewmh_get_wm_pid_reply(
                const_cast<xcb_ewmh_connection_t*>(&ewmh),
                xcb_ewmh_get_wm_pid(const_cast<xcb_ewmh_connection_t*>(&ewmh), window), &pid,
                nullptr))
            return std::nullopt;
        return static_cast<std::int32_t>(pid);
    }

    std::optional<xcb_window_t> activeWindow() {
        xcb_window_t window = 0;
        if (!xcb_ewmh_get_active_window_reply(
                &ewmh, xcb_ewmh_get_active_window(&ewmh, screenNumber), &window, nullptr) ||
            window == 0 || window == XCB_NONE)
            return std::nullopt;
        return window;
    }

    Extents frameExtents(xcb_window_t window) {
        xcb_ewmh_get_extents_reply_t extents{};
        if (!xcb_ewmh_get_frame_extents_reply(&ewmh, xcb_ewmh_get_frame_extents(&ewmh, window),
                                              &extents, nullptr))
            return {};
        return {static_cast<std::int32_t>(extents.left), static_cast<std::int32_t>(extents.right),
                static_cast<std::int32_t>(extents.top), static_cast<std::int32_t>(extents.bottom)};
    }

    // The monitors, primary first; the whole root window when RandR has none.
    std::vector<Box> monitors() {
        std::vector<Box> boxes;
        xcb_randr_get_monitors_reply_t* reply =
            xcb_randr_get_monitors_reply(c, xcb_randr_get_monitors(c, root, 1), nullptr);
        if (reply) {
            for (auto it = xcb_randr_get_monitors_monitors_iterator(reply); it.rem;
                 xcb_randr_monitor_info_next(&it)) {
                const Box box{it.data->x, it.data->y, it.data->width, it.data->height};
                if (it.data->primary)
                    boxes.insert(boxes.begin(), box);
                else
                    boxes.push_back(box);
            }
            std::free(reply);
        }
        if (boxes.empty()) boxes.push_back(rootBox);
        return boxes;
    }

    Box workArea() {
        std::uint32_t desktop = 0;
        xcb_ewmh_get_current_desktop_reply(&ewmh, xcb_ewmh_get_current_desktop(&ewmh, screenNumber),
                                           &desktop, nullptr);
        xcb_ewmh_get_workarea_reply_t areas{};
        if (!xcb_ewmh_get_workarea_reply(&ewmh, xcb_ewmh_get_workarea(&ewmh, screenNumber), &areas,
                                         nullptr))
            return rootBox;
        Box area = rootBox;
        if (desktop < areas.workarea_len) {
            const xcb_ewmh_geometry_t& g = areas.workarea[desktop];
            area = {static_cast<std::int32_t>(g.x), static_cast<std::int32_t>(g.y),
                    static_cast<std::int32_t>(g.width), static_cast<std::int32_t>(g.height)};
        }
        xcb_ewmh_get_workarea_reply_wipe(&areas);
        return area;
    }

    void moveResize(xcb_window_t window, std::uint32_t flags, std::int32_t x, std::int32_t y,
                    std::int32_t width, std::int32_t height) {
        // Source 2: a pager, that is, the user's own request.
        xcb_ewmh_request_moveresize_window(
            &ewmh, screenNumber, window, static_cast<xcb_gravity_t>(northWestGravity),
            XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER,
            static_cast<xcb_ewmh_moveresize_window_opt_flags_t>(flags), x, y,
            static_cast<std::uint32_t>(std::max(width, 1)),
            static_cast<std::uint32_t>(std::max(height, 1)));
    }

    void unmaximize(xcb_window_t window) {
        xcb_ewmh_request_change_wm_state(&ewmh, screenNumber, window, XCB_EWMH_WM_STATE_REMOVE,
                                         ewmh._NET_WM_STATE_MAXIMIZED_VERT,
                                         ewmh._NET_WM_STATE_MAXIMIZED_HORZ,
                                         XCB_EWMH_CLIENT_SOURCE_TYPE_OTHER);
    }
};

std::shared_ptr<X11WindowSystem> X11WindowSystem::connect() {
    const char* session = std::getenv("XDG_SESSION_TYPE");
    if (session && std::string_view(session) == "wayland") return nullptr;
    if (!std::getenv("DISPLAY")) return nullptr;
    auto x = std::make_unique<Connection>();
    x->c = xcb_connect(nullptr, &x->screenNumber);
    if (xcb_connection_has_error(x->c)) return nullptr;
    if (!xcb_ewmh_init_atoms_replies(&x->ewmh, xcb_ewmh_init_atoms(x->c, &x->ewmh), nullptr)) {
        std::memset(&x->ewmh, 0, sizeof x->ewmh);
        return nullptr;
    }
    const xcb_setup_t* setup = xcb_get_setup(x->c);
    auto it = xcb_setup_roots_iterator(setup);
    for (int i = 0; i < x->screenNumber && it.rem; ++i) xcb_screen_next(&it);
    if (!it.rem) return nullptr;
    x->root = it.data->root;
    x->rootBox = {0, 0, it.data->width_in_pixels, it.data->height_in_pixels};
    return std::shared_ptr<X11WindowSystem>(new X11WindowSystem(std::move(x)));
}

X11WindowSystem::X11WindowSystem(std::unique_ptr<Connection> connection)
    : x_(std::move(connection)) {}

X11WindowSystem::~X11WindowSystem() = default;

bool X11WindowSystem::isProcessRunning(std::int32_t pid) {
    return pid > 0 && (::kill(pid, 0) == 0 || errno == EPERM);
}

std::int32_t X11WindowSystem::currentProcessID() {
    return ::getpid();
}

std::optional<desktop::FrontmostApplication> X11WindowSystem::frontmostApplication() {
    std::lock_guard lock(mutex_);
    const auto window = x_->activeWindow();
    if (!window) return std::nullopt;
    return desktop::FrontmostApplication{x_->pidOf(*window)};
}

std::optional<desktop::WindowHandle> X11WindowSystem::focusedWindow(
    std::optional<std::int32_t> pid) {
    std::lock_guard lock(mutex_);
    const auto active = x_->activeWindow();
    if (active && (!pid || x_->pidOf(*active) == pid)) return *active;
    if (!pid) return std::nullopt;
    // The process is not in front: its topmost window is the one it last worked in.
    xcb_ewmh_get_windows_reply_t stacking{};
    if (!xcb_ewmh_get_client_list_stacking_reply(
            &x_->ewmh, xcb_ewmh_get_client_list_stacking(&x_->ewmh, x_->screenNumber), &stacking,
            nullptr))
        return std::nullopt;
    std::optional<desktop::WindowHandle> found;
    for (std::uint32_t i = stacking.windows_len; i-- > 0 && !found;)
        if (x_->pidOf(stacking.windows[i]) == pid) found = stacking.windows[i];
    xcb_ewmh_get_windows_reply_wipe(&stacking);
    return found;
}

std::optional<desktop::Point> X11WindowSystem::position(desktop::WindowHandle handle) {
    std::lock_guard lock(mutex_);
    const auto window = static_cast<xcb_window_t>(handle);
    xcb_translate_coordinates_reply_t* origin = xcb_translate_coordinates_reply(
        x_->c, xcb_translate_coordinates(x_->c, window, x_->root, 0, 0), nullptr);
    if (!origin) return std::nullopt;
    const Extents extents = x_->frameExtents(window);
    const Box primary = x_->monitors().front();
    const desktop::Point topLeft{static_cast<double>(origin->dst_x - extents.left - primary.x),
                                 static_cast<double>(origin->dst_y - extents.top - primary.y)};
    std::free(origin);
    return topLeft;
}

std::vector<desktop::Screen> X11WindowSystem::screens() {
    std::lock_guard lock(mutex_);
    const std::vector<Box> monitors = x_->monitors();
    const Box area = x_->workArea();
    const Box& primary = monitors.front();
    // Root coordinates, y down, become the desktop's y-up ones around the primary display.
    const auto flipped = [&](const Box& box) {
        return desktop::Rect{static_cast<double>(box.x - primary.x),
                             static_cast<double>(primary.height - (box.y - primary.y) - box.height),
                             static_cast<double>(box.width), static_cast<double>(box.height)};
    };
    std::vector<desktop::Screen> result;
    for (const Box& monitor : monitors)
        result.push_back({flipped(monitor), flipped(intersection(monitor, area))});
    return result;
}

std::optional<desktop::Screen> X11WindowSystem::mainScreen() {
    const std::vector<desktop::Screen> all = screens();
    return all.front();
}

bool X11WindowSystem::setPosition(desktop::WindowHandle handle, desktop::Point topLeft) {
    std::lock_guard lock(mutex_);
    const auto window = static_cast<xcb_window_t>(handle);
    if (!x_->alive(window)) return false;
    const Box primary = x_->monitors().front();
    x_->unmaximize(window);
    x_->moveResize(window, moveFlags, static_cast<std::int32_t>(std::lround(topLeft.x)) + primary.x,
                   static_cast<std::int32_t>(std::lround(topLeft.y)) + primary.y, 1, 1);
    return xcb_flush(x_->c) > 0;
}

bool X11WindowSystem::setSize(desktop::WindowHandle handle, double width, double height) {
    std::lock_guard lock(mutex_);
    const auto window = static_cast<xcb_window_t>(handle);
    if (!x_->alive(window)) return false;
    // The layout is the frame's; the client gets what the decorations leave.
    const Extents extents = x_->frameExtents(window);
    x_->moveResize(window, sizeFlags, 0, 0,
                   static_cast<std::int32_t>(std::lround(width)) - extents.left - extents.right,
                   static_cast<std::int32_t>(std::lround(height)) - extents.top - extents.bottom);
    return xcb_flush(x_->c) > 0;
}

std::string X11WindowSystem::applicationName(desktop::WindowHandle handle) {
    std::lock_guard lock(mutex_);
    // WM_CLASS is "instance\0Class\0"; the class is the application's name.
    xcb_get_property_reply_t* reply =
        xcb_get_property_reply(x_->c,
                               xcb_get_property(x_->c, 0, static_cast<xcb_window_t>(handle),
                                                XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 256),
                               nullptr);
    if (!reply) return {};
    const std::string_view value(static_cast<const char*>(xcb_get_property_value(reply)),
                                 static_cast<std::size_t>(xcb_get_property_value_length(reply)));
    std::string name;
    if (const std::size_t split = value.find('\0'); split != std::string_view::npos) {
        const std::string_view rest = value.substr(split + 1);
        name = std::string(rest.substr(0, rest.find('\0')));
    }
    std::free(reply);
    return name;
}

}  // namespace nuvrel::platform
