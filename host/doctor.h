// What is installed on this machine to reach phones with, and what is missing.
#pragma once

#include <string>
#include <vector>

#include "host/driver.h"

namespace ovno2::host {

struct Finding {
    const char* key;        // name in JSON
    const char16_t* label;  // what was looked at
    Text value;             // what was found
};

struct Diagnosis {
    std::vector<Finding> findings;
    std::vector<std::string> problems;  // what keeps phones from being read, and what to do about it; UTF-8
};

Diagnosis diagnose(PhoneDriver& driver);

}  // namespace ovno2::host
