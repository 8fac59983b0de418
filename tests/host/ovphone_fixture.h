// The program as its user starts it, on the bundled phones.
#pragma once

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <sys/wait.h>

#include "common/machine_test.h"

namespace ovno2::host {

namespace fs = std::filesystem;

struct Outcome {
    int status;
    std::string output;
    std::string errors;
};

// Every source has its own: the host has another function of this name.
[[maybe_unused]] static std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class Ovphone : public ::testing::Test {
  protected:
    // `plan` holds commands for the simulator.
    Outcome run(const std::string& arguments, const std::string& plan = "[]") {
        std::ofstream(folder.path() / "plan.json") << plan;
        return runLine("OVNO2_SIMULATOR_PLAN=plan.json '" OVPHONE "' " + arguments);
    }
    Outcome runLine(const std::string& line) {
        const fs::path output = folder.path() / "output", errors = folder.path() / "errors";
        const std::string command = "cd '" + folder.path().string() + "' && OVNO2_HOME='" +
                                    (folder.path() / "home").string() + "' OVNO2_PHONES='" + phones.string() +
                                    "' " + line + " >'" + output.string() + "' 2>'" + errors.string() + "'";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentOf(output), contentOf(errors)};
    }
    // The JSON that a command writes.
    std::string json(const std::string& arguments, int status = 0) {
        const Outcome outcome = run(arguments + " --format json");
        EXPECT_EQ(status, outcome.status) << outcome.errors;
        rapidjson::Document parsed;
        parsed.Parse<rapidjson::kParseValidateEncodingFlag>(outcome.output.c_str());
        EXPECT_FALSE(parsed.HasParseError()) << outcome.output;
        return outcome.output;
    }
    // The objects of an array that has one a line.
    std::vector<std::string> items(const std::string& arguments, int status = 0) {
        std::istringstream lines(json(arguments, status));
        std::vector<std::string> found;
        for (std::string line; std::getline(lines, line);)
            if (line.starts_with("{")) found.push_back(line.substr(0, line.rfind('}') + 1));
        return found;
    }

    struct Case {
        std::string arguments;
        int status;
        const char* message;  // a part of what the user is told; empty = nothing
        std::string plan = "[]";
    };
    void expectOutcome(const Case& c) {
        const Outcome outcome = run(c.arguments, c.plan);
        EXPECT_EQ(c.status, outcome.status) << c.arguments;
        EXPECT_NE(std::string::npos, outcome.errors.find(c.message)) << c.arguments << ": " << outcome.errors;
        EXPECT_EQ(*c.message == 0, outcome.errors.empty()) << c.arguments << ": " << outcome.errors;
    }

    TemporaryFolder folder;
    fs::path phones = BUNDLED_PHONES;
};

}  // namespace ovno2::host
