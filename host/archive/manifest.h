// The manifest of an archive: the SHA-256 of every other file, in the form that sha256sum writes and checks.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/formats/sha256.h"

namespace ovno2::host {

struct Manifest {
    std::map<std::string, Digest> files;  // by path in the archive: UTF-8, "/" between the parts
    // Lines that name no file of the archive, for people: "SHA256SUMS:12: ...". UTF-8.
    std::vector<std::string> problems;
};

// Nothing makes it fail. A path that leads out of the folder is a problem and none of the files.
Manifest readManifest(std::string_view text);

std::string manifestLine(const std::string& path, const Digest& digest);

// False for a path that is absolute, goes up, or that no system takes.
bool staysInside(const std::string& path);

}  // namespace ovno2::host
