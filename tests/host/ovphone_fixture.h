// The program as its user starts it, on the bundled phones.
#pragma once

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>

#include "common/machine_test.h"

namespace ovno2::host {

namespace fs = std::filesystem;
using nlohmann::json;

struct Outcome {
    int status;
    std::string output;
    std::string errors;
};

inline std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class Ovphone : public ::testing::Test {
  protected:
    // `environment` holds further settings of the program's environment, as a shell takes them.
    Outcome run(const std::string& arguments, const std::string& environment = "") {
        return runLine(environment + " '" OVPHONE "' " + arguments);
    }
    Outcome runLine(const std::string& line) {
        const fs::path output = folder.path() / "output", errors = folder.path() / "errors";
        const std::string command = "cd '" + folder.path().string() + "' && OVNO2_HOME='" +
                                    (folder.path() / "home").string() + "' OVNO2_PHONES='" + phones.string() +
                                    "' " + line + " >'" + output.string() + "' 2>'" + errors.string() + "'";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(output), contentOf(errors)};
    }
    json runJson(const std::string& arguments) {
        const Outcome outcome = run(arguments + " --format json");
        EXPECT_EQ(0, outcome.status) << outcome.errors;
        return json::parse(outcome.output);
    }
    json contact(const json& contacts, const std::string& uid) {
        for (const json& entry : contacts)
            if (entry["uid"] == uid) return entry;
        return nullptr;
    }

    TemporaryFolder folder;
    fs::path phones = BUNDLED_PHONES;
};

}  // namespace ovno2::host
