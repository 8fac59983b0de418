// Stands in host/driver/com_client.h now; this one is for those who include it by its old name.
#pragma once

#include "host/driver/com_client.h"

namespace ovno2::host {

using TextVariable = Bstr;

}  // namespace ovno2::host
