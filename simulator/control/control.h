// How tests, benchmarks and the host steer the simulated phones; link the CMake target simulator_control.
//
// `Control` loads the simulator from a folder, or takes the libraries that the process has loaded already,
// and speaks its JSON commands (docs/simulator.md); everything acts on the one world of this process. Every
// member throws std::runtime_error with the simulator's message when a command is refused. Safe from several
// threads.
#pragma once

#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace ovno2::simulator {

class Control {
  public:
    using Json = nlohmann::json;

    // `folder` holds the libraries; the default is where this build puts them.
    explicit Control(const std::filesystem::path& folder = OVNO2_SIMULATOR_FOLDER);
    ~Control();
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    // Any command: its name and its other members, or the whole of it as JSON text.
    Json run(const char* command, Json arguments = Json::object()) const;
    Json runText(const std::string& text) const;

    // An empty world: no phones, no plan, nothing handed out, the journal off.
    void reset() const;

    // Phones. `load` gives what is wrong with the images that were left out.
    std::vector<std::string> load(const std::filesystem::path& folder) const;
    void addPhone(const Json& identity) const;
    void addPhone(const Json& identity, const Json& contacts) const;
    // A phone with one USB connection and nothing special about it.
    static Json plainPhone(const std::string& serial, const std::string& name = "Nokia N95");
    // contacts.json's form around a list of contacts.
    static Json phoneBook(const Json& contacts);
    // Fills a phone that has no image with `contacts` contacts of `fields` fields each, made in memory.
    void fillContacts(const std::string& serial, std::uint32_t contacts, std::uint32_t fields) const;
    void plug(const std::string& serial, bool attached) const;

    // The journal, one line a call. Reading it empties it.
    void journal(bool on) const;
    std::vector<std::string> readJournal() const;

    // The n-th call of a function from now gives a status, or every call from the n-th on. "*" = any
    // function.
    void fail(const std::string& call, std::uint32_t status, std::uint32_t nth = 1,
              bool onwards = false) const;
    void failAllocation(const std::string& call, std::uint32_t nth = 1, bool onwards = false) const;
    // The contact stays listed and can no longer be read.
    void vanish(const std::string& serial, const std::string& uid) const;
    void clearPlan() const;

    // Record sizes, versions and the arguments of the folder deletion for all phones.
    void shape(const Json& shape) const;

    // What has been handed out and not come back.
    Json balance() const;
    // Empty when everything has come back and nothing was misused, else what is wrong. A library start may
    // stay.
    std::string leaks() const;

  private:
    using Entry = const char* (*)(const char*);
    void* library = nullptr;
    Entry entry = nullptr;
};

}  // namespace ovno2::simulator
