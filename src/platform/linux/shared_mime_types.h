#pragma once
// File types through the shared MIME info database (GIO's content types and the globs of the
// MIME folders), for files whose names tell no type of their own.
//
// Threading: any thread; the glob table is read once per process.

#include <string>
#include <string_view>
#include <vector>

namespace nuvrel::platform {

// The extensions ("*.ext" globs) that shared MIME info gives the MIME type, lower-cased; empty
// for a type without any.
const std::vector<std::string>& extensionsOfMimeType(std::string_view mimeType);

// Whether a file called `name` has a type by its name alone.
bool nameTellsType(std::string_view name);

// The extensions of the type that the content of the regular file `name` below the open folder
// `folder` shows, when its name tells no type; empty when the name does, when the content shows
// no known type, or when the file cannot be read. Never follows a link or blocks on a pipe.
std::vector<std::string> contentExtensions(int folder, const char* name);

}  // namespace nuvrel::platform
