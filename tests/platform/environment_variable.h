// A variable of the environment for the length of a test.
#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace ovno2 {

class EnvironmentVariable {
  public:
    EnvironmentVariable(const char* name, const std::string& value) : name_(name) {
        if (const char* const old = std::getenv(name)) old_ = old;
        setenv(name, value.c_str(), /*overwrite=*/1);
        tzset();
    }
    ~EnvironmentVariable() {
        old_ ? setenv(name_, old_->c_str(), /*overwrite=*/1) : unsetenv(name_);
        tzset();
    }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

  private:
    const char* name_;
    std::optional<std::string> old_;
};

}  // namespace ovno2
