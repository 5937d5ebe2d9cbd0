#include "platform/linux/freedesktop_trash.h"

#include <gio/gio.h>

#include <memory>
#include <string>

namespace nuvrel::platform {

void moveToTrash(const std::filesystem::path& file) {
    const std::unique_ptr<GFile, decltype(&g_object_unref)> handle(
        g_file_new_for_path(file.c_str()), g_object_unref);
    GError* error = nullptr;
    if (g_file_trash(handle.get(), nullptr, &error)) return;
    const std::string reason = error ? error->message : "unknown error";
    g_clear_error(&error);
    throw TrashError(reason);
}

}  // namespace nuvrel::platform
