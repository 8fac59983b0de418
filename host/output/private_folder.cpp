#include "host/output/private_folder.h"

#include <cstdlib>

namespace ovno2::host {

namespace {

const std::string start = ".ovphone-";

}  // namespace

std::string privateFolderName(unsigned long process, unsigned number) {
    return start + std::to_string(process) + "-" + std::to_string(number);
}

unsigned long processOf(const std::string& folderName) {
    if (!folderName.starts_with(start)) return 0;
    char* end = nullptr;
    const unsigned long process = std::strtoul(folderName.c_str() + start.size(), &end, 10);
    return *end == '-' ? process : 0;
}

}  // namespace ovno2::host
