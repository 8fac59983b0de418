// The phone's directory records as the host's folder entries.
#pragma once

#include <span>

#include "host/driver/driver.h"
#include "phonefs/dir_item.h"

namespace ovno2::host {

std::vector<FolderEntry> folderEntries(std::span<DirItem> records);

}  // namespace ovno2::host
