// Libraries bound by name at run time.
#pragma once

#include <memory>

#include "base/types.h"

namespace ovno2::platform {

class Library {
  public:
    virtual ~Library() = default;                // releases the library
    virtual void* symbol(const char* name) = 0;  // null when the library does not export it
};

class Libraries {
  public:
    virtual ~Libraries() = default;
    virtual std::unique_ptr<Library> load(TextView name) = 0;  // null when it cannot be found or loaded
    virtual Text moduleFolder() = 0;  // the folder that holds the module file, without a trailing separator
    virtual Text moduleName() = 0;    // the module's file name without its extension
};

}  // namespace ovno2::platform
