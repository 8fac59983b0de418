// The command line of `ovphone`: its commands and options, and what is wrong with a line that it does not
// understand.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ovno2::host {

enum class Command {
    overview,
    list,
    contacts,
    files,
    doctor,
    logState,
    logOn,
    logOff,
    logFile,
    logLevel,
    logFollow
};
enum class Format { table, json };

enum class FilesAction { list, tree, get, put, rename, remove, makeFolder, removeFolder };

struct FilesOptions {
    FilesAction action = FilesAction::list;
    std::vector<std::string> paths;  // in the order of the line
    std::string renamed;             // a path, and what it is called from now on
    std::string newName;
    bool recursive = false;
    bool force = false;
    bool parents = false;  // a new folder's missing folders are made, too
};

struct Options {
    Command command = Command::overview;
    Format format = Format::table;
    std::string phone;         // as the user names it; empty = the first
    std::string pictures;      // folder; empty = no pictures are kept
    std::string connectivity;  // folder or name of a provider of the connectivity library
    std::string phones;        // folder of phone images for the simulator
    FilesOptions files;
    std::string logFile;
    int logLevel = 0;
    bool logTimestamps = false;
};

// Empty when there is nothing to do: help was asked for, or the line is wrong; `exitStatus` tells which (0 or
// 2), and the user has been told. `arguments` begins with the program's name.
std::optional<Options> parseCommandLine(const std::vector<std::string>& arguments, int& exitStatus);

}  // namespace ovno2::host
