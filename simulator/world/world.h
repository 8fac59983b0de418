// A world of phones: what both libraries answer from.
//
// Owns everything else: the phones, the media, the memory handed out, the sessions, the journal and the plan.
// One lock guards all of it; a call of the library holds it from beginning to end (calls/serve.h). What a
// thread has initialised belongs to that thread alone; everything else is shared.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "simulator/instruments/journal.h"
#include "simulator/instruments/plan.h"
#include "simulator/memory/low_memory.h"
#include "simulator/world/phone.h"
#include "simulator/world/sessions.h"

namespace ovno2::simulator {

// The groups of functions that are started and stopped.
enum class Group : std::uint8_t { connectivity, deviceManagement, media, fileSystem, content };
inline constexpr std::size_t groups = 5;
const char* nameOf(Group group);

struct Medium {
    Word medium = 0;  // library numbering
    std::u16string description;
    bool on = true;
};
std::vector<Medium> allMediaOn();

// A device that a Bluetooth search finds.
struct FoundDevice {
    enum class Reach : std::uint8_t { always, afterSearch, afterTwoSearches, never };
    Word deviceNumber = 0;
    std::u16string deviceName;
    std::u16string address;
    Word state = 0;
    std::optional<std::u16string> passkey;
    std::optional<Status> refuses;  // what pairing gives whatever the passkey
    Reach reach = Reach::always;
    Word appearsAfter = 0;  // tenths of a second that a search must last to find it
    bool paired = false;
    bool trusted = false;
    unsigned searches = 0;  // that have found it

    bool isReached() const {
        return reach == Reach::always || (reach == Reach::afterSearch && searches >= 1) ||
               (reach == Reach::afterTwoSearches && searches >= 2);
    }
};

class World {
  public:
    World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    std::mutex lock;
    LowMemory memory;
    Sessions sessions{memory};
    Journal journal;
    Plan plan{memory};

    std::filesystem::path phonesFolder;  // the first one loaded: holds bluetooth.json and media.json
    std::vector<std::shared_ptr<Phone>> phones;
    std::vector<std::string> imageErrors;
    std::vector<Medium> media;
    std::vector<FoundDevice> found;
    std::vector<std::string> misuse;  // frees of what was never handed out, and the like

    // Parts of items that went back one by one, by the item's block; see calls/memory_calls.cpp.
    std::map<char*, std::vector<Address>> releasedParts;

    // An empty world: no phones, no sessions, nothing handed out, no plan, the journal off.
    void reset();

    // Adds a phone behind those that are reported before it; false when its serial number is there already.
    bool add(std::shared_ptr<Phone> phone);

    // The attached phone with this serial number, or null.
    std::shared_ptr<Phone> find(const std::u16string& serial) const;

    bool isOn(Word medium) const;
    bool isUp(const Connection& connection) const;  // its medium is on and, over Bluetooth, it is paired
    std::vector<const Connection*> attachedBy(const Phone& phone) const;

    // The highest of a version among the phones, or what the shape says.
    Versions versions() const;
    RecordSizes sizesOf(const Phone& phone) const;

    // What this thread has started. The connectivity group counts; the others are on or off.
    unsigned& started(Group group);
    std::array<std::uint64_t, groups> startedByAll() const;

    // The connection to a phone is lost: every session with it gives `status` from now on.
    void breakSessions(const Phone& phone, Status status);

  private:
    std::map<unsigned long, std::array<unsigned, groups>> startedByThread;
};

}  // namespace ovno2::simulator
