#include "simulator/control/control.h"

#include <stdexcept>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace ovno2::simulator {
namespace {

using Json = Control::Json;

#if defined(_WIN32)

void* openLibrary(const std::filesystem::path& folder) {
    return ::LoadLibraryW((folder / "ConnAPI.dll").c_str());
}

void* symbolOf(void* library, const char* name) {
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(library), name));
}

void closeLibrary(void* library) {
    ::FreeLibrary(static_cast<HMODULE>(library));
}

#else

void* openLibrary(const std::filesystem::path& folder) {
    return ::dlopen((folder / "libConnAPI.so").c_str(), RTLD_NOW);
}

void* symbolOf(void* library, const char* name) {
    return ::dlsym(library, name);
}

void closeLibrary(void* library) {
    ::dlclose(library);
}

#endif

std::string utf8(const std::filesystem::path& path) {
    const std::u8string name = path.u8string();
    return {name.begin(), name.end()};
}

}  // namespace

Control::Control(const std::filesystem::path& folder) : library(openLibrary(folder)) {
    if (library != nullptr) entry = reinterpret_cast<Entry>(symbolOf(library, "SimulatorControl"));
    if (entry == nullptr) throw std::runtime_error("no simulator in " + utf8(folder));
}

Control::~Control() {
    closeLibrary(library);
}

Json Control::runText(const std::string& text) const {
    Json answer = Json::parse(entry(text.c_str()));
    if (answer.contains("error")) throw std::runtime_error(answer["error"].get<std::string>());
    return answer;
}

Json Control::run(const char* command, Json arguments) const {
    arguments["command"] = command;
    return runText(arguments.dump(-1, ' ', false, Json::error_handler_t::replace));
}

void Control::reset() const {
    run("reset");
}

std::vector<std::string> Control::load(const std::filesystem::path& folder) const {
    return run("load", {{"folder", utf8(folder)}})["errors"];
}

void Control::addPhone(const Json& identity) const {
    run("addPhone", {{"phone", identity}});
}

void Control::addPhone(const Json& identity, const Json& contacts) const {
    run("addPhone", {{"phone", identity}, {"contacts", contacts}});
}

Json Control::plainPhone(const std::string& serial, const std::string& name) {
    return {{"format", 1},
            {"serialNumber", serial},
            {"typeName", name},
            {"platform", {{"code", "0x2000020"}, {"level", 500}}},
            {"connections", {{{"deviceNumber", 1}, {"medium", "usb"}, {"deviceName", name}}}}};
}

Json Control::phoneBook(const Json& contacts) {
    Json book =
        Json::parse(R"({"format": 1, "folder": {"id": 1, "name": "Contacts", "path": "predefContacts"}})");
    book["contacts"] = contacts;
    return book;
}

void Control::fillContacts(const std::string& serial, std::uint32_t contacts, std::uint32_t fields) const {
    run("fillContacts", {{"serial", serial}, {"contacts", contacts}, {"fields", fields}});
}

void Control::plug(const std::string& serial, bool attached) const {
    run("plug", {{"serial", serial}, {"attached", attached}});
}

void Control::journal(bool on) const {
    run("journal", {{"on", on}});
}

std::vector<std::string> Control::readJournal() const {
    return run("readJournal")["lines"];
}

void Control::fail(const std::string& call, std::uint32_t status, std::uint32_t nth, bool onwards) const {
    run("fault", {{"call", call}, {"nth", nth}, {"onwards", onwards}, {"status", status}});
}

void Control::failAllocation(const std::string& call, std::uint32_t nth, bool onwards) const {
    run("fault", {{"call", call}, {"nth", nth}, {"onwards", onwards}, {"allocation", true}});
}

void Control::vanish(const std::string& serial, const std::string& uid) const {
    run("vanish", {{"serial", serial}, {"uid", uid}});
}

void Control::clearPlan() const {
    run("clearPlan");
}

void Control::shape(const Json& shape) const {
    run("shape", shape);
}

Json Control::balance() const {
    return run("balance");
}

std::string Control::leaks() const {
    const Json balance = this->balance();
    Json wrong = Json::object();
    for (const char* const part : {"handedOut", "open", "misuse"}) {
        if (!balance[part].empty()) wrong[part] = balance[part];
    }
    return wrong.empty() ? std::string() : wrong.dump();
}

}  // namespace ovno2::simulator
