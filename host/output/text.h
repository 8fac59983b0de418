// The value types and the text helpers that the host shares with the module: UTF-16 texts, numbers in them,
// UTF-8.
//
// Nothing here calls the module; what does, goes through host/driver/driver.h.
#pragma once

#include "base/types.h"
#include "base/utf8.h"
#include "base/values.h"
