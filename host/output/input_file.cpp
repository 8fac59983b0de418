#include "host/output/input_file.h"

#include <fstream>
#include <iostream>
#include <iterator>

#include "host/output/command_output.h"
#include "host/output/console.h"
#include "host/output/exit_status.h"

namespace ovno2::host {

namespace {

namespace fs = std::filesystem;

constexpr const char* standardStream = "-";

std::string bytesOf(std::istream& stream) {
    return {std::istreambuf_iterator<char>(stream), {}};
}

[[noreturn]] void refuse(const std::string& file, const std::string& why) {
    throw CommandFailure{failed, "\"" + file + "\" " + why};
}

}  // namespace

std::string readInputFile(const std::string& name) {
    if (name == standardStream) return bytesOf(std::cin);
    const fs::path path = console::pathOf(name);
    std::error_code error;
    if (fs::is_directory(path, error)) refuse(name, "is a folder.");
    std::ifstream stream(path, std::ios::binary);
    if (!stream) refuse(name, fs::exists(path, error) ? "cannot be read." : "is not there.");
    std::string bytes = bytesOf(stream);
    if (stream.bad()) refuse(name, "cannot be read.");
    return bytes;
}

std::string inputName(const std::string& name) {
    return name == standardStream ? "standard input" : name;
}

}  // namespace ovno2::host
