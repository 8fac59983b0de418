// What the content tests share: simulated phones, records of a test's own in low memory, and an end at which
// everything has come back.
#pragma once

#include <cstring>
#include <gmock/gmock.h>

#include "common/phone_test.h"
#include "contacts/contacts_connection.h"
#include "content/sessions.h"
#include "content/state.h"
#include "devices/session.h"
#include "library/library_memory.h"

namespace ovno2::Content {

using Json = simulator::Control::Json;
using library::Word;

class ContentTest : public PhoneTest {
  protected:
    ~ContentTest() override {
        Contacts::CloseContactsConnection();
        PIMApiTerminate();
        Session::DMApiTerminate();
        EXPECT_EQ(0, simulator.balance()["closedInside"]);
        for (const auto& [block, size] : blocks_)
            machine.memory().freeLow(block, size);
    }

    // Bytes in memory that a record can point to.
    Address put(const void* bytes, std::size_t size) {
        void* const block = machine.memory().allocateLow(size);
        std::memcpy(block, bytes, size);
        blocks_.emplace_back(block, size);
        return library::addressOf(block);
    }
    Address putText(const Text& text) { return put(text.c_str(), (text.size() + 1) * sizeof(char16_t)); }
    Address putWords(const std::vector<Word>& words) {
        return put(words.data(), words.size() * sizeof(Word));
    }

    // The last `size` readable bytes before memory that nobody can read.
    Address putAtEnd(const void* bytes, std::size_t size) {
        const Address unmapped = unmappedPage();
        std::memcpy(static_cast<char*>(library::pointerTo(unmapped)) - size, bytes, size);
        return unmapped - static_cast<Address>(size);
    }

    // A page that cannot be read, behind one that can.
    Address unmappedPage() {
        constexpr std::size_t page = 4096;
#ifdef _WIN32
        auto* const pages = static_cast<char*>(pageBeforeNothing());
#else
        auto* const pages = static_cast<char*>(machine.memory().allocateLow(2 * page));
        machine.memory().freeLow(pages + page, page);
        blocks_.emplace_back(pages, page);
#endif
        return library::addressOf(pages + page);
    }

  private:
    std::vector<std::pair<void*, std::size_t>> blocks_;
};

}  // namespace ovno2::Content
