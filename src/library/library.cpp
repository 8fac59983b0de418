#include <array>
#include <memory>

#include "library/library_memory.h"
#include "pc/ansi.h"

namespace ovno2::library {

namespace {

struct State {
    static constexpr StateSlot slot = StateSlot::library;
    std::array<std::unique_ptr<platform::Library>, static_cast<std::size_t>(File::count)> files;
    std::array<void*, static_cast<std::size_t>(Entry::count)> addresses{};
};

TextView nameOf(File file) {
    return file == File::ConnAPI ? u"ConnAPI" : u"DAAPI";
}

void* lookUp(State& state, File file, const char* name) {
    std::unique_ptr<platform::Library>& library = state.files[static_cast<std::size_t>(file)];
    if (!library) library = currentPlatform().libraries().load(nameOf(file));
    if (!library)
        throw RuntimeFailure(fileNotFound,
                             Text(describeFailure(fileNotFound)).append(u": ").append(nameOf(file)));
    void* address = library->symbol(name);
    if (!address) {
        Text description(describeFailure(entryPointMissing));
        description.append(u" ").append(name, name + std::char_traits<char>::length(name));
        throw RuntimeFailure(entryPointMissing, description.append(u" in ").append(nameOf(file)));
    }
    return address;
}

}  // namespace

void* entryPoint(File file, Entry entry, const char* name) {
    State& state = stateOf<State>();
    void*& address = state.addresses[static_cast<std::size_t>(entry)];
    if (!address) address = lookUp(state, file, name);
    return address;
}

Text codePageText(Address address, std::size_t limit) {
    if (!isAddress(address)) return {};
    platform::Memory& memory = currentPlatform().memory();
    const auto* source = static_cast<const char16_t*>(pointerTo(address));
    Text text;
    if (!memory.readText(source, limit, text)) return {};
    return fromAnsi(toAnsi(text).substr(0, limit));
}

}  // namespace ovno2::library
