#include "simulator/instruments/plan.h"

#include <cstring>
#include <utility>

#include "simulator/system/system.h"

namespace ovno2::simulator {
namespace {

// How much text there is before the page without access.
constexpr std::size_t unterminatedBytes = 4096;

}  // namespace

void Plan::add(Fault fault) {
    faults.push_back(std::move(fault));
}

void Plan::add(Drop drop) {
    drops.push_back(std::move(drop));
}

void Plan::add(Poke poke) {
    pokes.push_back(std::move(poke));
}

void Plan::clear() {
    repeating = false;
    faults.clear();
    drops.clear();
    pokes.clear();
    for (char* const text : texts)
        memory.release(text);
    texts.clear();
}

std::optional<Fault> Plan::arrive(std::string_view call) {
    std::optional<Fault> met;
    for (Fault& fault : faults) {
        if (fault.occasion.matches(call) && fault.occasion.arrives() && !met) met = fault;
    }
    return met;
}

std::optional<Drop> Plan::dropOn(const std::u16string& serial) {
    std::optional<Drop> met;
    for (auto drop = drops.begin(); drop != drops.end();) {
        const bool meant = !drop->bytes && (!drop->serial || *drop->serial == serial);
        if (meant && drop->after == 0) {
            met = *drop;
            drop = drops.erase(drop);
            continue;
        }
        if (meant) --drop->after;
        ++drop;
    }
    return met;
}

std::optional<Drop> Plan::dropWithin(const std::u16string& serial, std::uint64_t& bytes) {
    for (auto drop = drops.begin(); drop != drops.end(); ++drop) {
        if (!drop->bytes || (drop->serial && *drop->serial != serial)) continue;
        if (*drop->bytes >= bytes) {
            *drop->bytes -= bytes;
            continue;
        }
        const Drop met = *drop;
        bytes = *met.bytes;
        drops.erase(drop);
        return met;
    }
    return std::nullopt;
}

std::vector<const Poke*> Plan::pokesOf(std::string_view call, const std::string* uid) {
    std::vector<const Poke*> met;
    for (Poke& poke : pokes) {
        if (poke.uid && (uid == nullptr || *poke.uid != *uid)) continue;
        if (poke.occasion.matches(call) && poke.occasion.arrives()) met.push_back(&poke);
    }
    return met;
}

void Plan::apply(const Poke& poke, void* words, std::size_t count) {
    if (poke.word >= count) return;
    char* const place = static_cast<char*>(words) + poke.word * sizeof(Word);
    Word value = 0;
    std::memcpy(&value, place, sizeof value);
    if (poke.orMask) {
        value |= *poke.orMask;
    } else if (const auto* const number = std::get_if<Word>(&poke.value)) {
        value = *number;
    } else if (const auto* const text = std::get_if<Poke::Text>(&poke.value)) {
        value = pokedText(text->text);
    } else {
        switch (std::get<Poke::Wild>(poke.value)) {
            case Poke::Wild::unmapped:
                value = unmapped();
                break;
            case Poke::Wild::unterminated:
                value = unterminated();
                break;
            case Poke::Wild::misaligned:
                value += 1;
                break;
        }
    }
    std::memcpy(place, &value, sizeof value);
}

Address Plan::unmapped() {
    unterminated();
    return wildPages == nullptr ? 0xFFFF0000 : addressOf(wildPages + system::pageUnit);
}

Address Plan::unterminated() {
    if (wildPages == nullptr) {
        wildPages = static_cast<char*>(system::takePages(2 * system::pageUnit));
        if (wildPages == nullptr) return 0;
        for (std::size_t i = 0; i < system::pageUnit; i += sizeof(char16_t)) {
            const char16_t letter = u'M';
            std::memcpy(wildPages + i, &letter, sizeof letter);
        }
        system::protectPages(wildPages + system::pageUnit, system::pageUnit);
    }
    return addressOf(wildPages + system::pageUnit - unterminatedBytes);
}

Address Plan::pokedText(const std::u16string& text) {
    const std::size_t bytes = (text.size() + 1) * sizeof(char16_t);
    char* const block = memory.allocate(bytes, BlockKind::held);
    if (block == nullptr) return 0;
    std::memcpy(block, text.c_str(), bytes);
    texts.push_back(block);
    return addressOf(block);
}

}  // namespace ovno2::simulator
