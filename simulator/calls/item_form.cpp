#include "simulator/calls/item_form.h"

#include <cstring>

namespace ovno2::simulator {
namespace {

// Records that the plan wants wild. Afterwards some address must still lead to the block, or nobody could
// free it.
void poke(World& world, const ItemForm& form, const RecordSizes& sizes, const ContentItem& item,
          char* record) {
    const RecordParts parts = form.parts(record, sizes);
    const LowMemory::Block block = itemBlock(world, parts);
    for (const Poke* const poke : world.plan.pokesOf("CAReadItem", &item.uid)) {
        if (poke->record == form.name()) world.plan.apply(*poke, record, form.bytes(sizes) / sizeof(Word));
        for (const RecordPart& part : parts.all()) {
            if (part.pair != poke->pair.value_or(0) || poke->index >= part.count) continue;
            char* const element = atAddress<char>(part.address) + poke->index * part.stride;
            if (poke->record == part.name) world.plan.apply(*poke, element, part.stride / sizeof(Word));
            if (poke->record != "value" || !part.endsInAddress) continue;
            Address value = 0;
            std::memcpy(&value, element + part.stride - sizeof value, sizeof value);
            const LowMemory::Block inside = world.memory.find(atAddress<void>(value));
            if (inside.start != block.start) continue;
            const std::size_t room =
                inside.bytes - static_cast<std::size_t>(atAddress<char>(value) - inside.start);
            world.plan.apply(*poke, atAddress<void>(value), room / sizeof(Word));
        }
    }
    if (block && itemBlock(world, form.parts(record, sizes)).start != block.start)
        world.memory.release(block.start);
}

}  // namespace

const ItemForm* formOf(ContentKind kind) {
    switch (kind) {
        case ContentKind::contacts:
            return &contactForm;
        case ContentKind::calendar:
            return &calendarForm;
        case ContentKind::notes:
            return &noteForm;
        case ContentKind::messages:
        case ContentKind::otherMessages:
            return &messageForm;
        case ContentKind::countedItems:
            break;
    }
    return nullptr;
}

void handOut(World& world, const Phone& phone, const RecordSizes& sizes, const ItemForm& form,
             const ContentItem& item, char* record) {
    form.build(world, phone, sizes, item, record);
    if (world.plan.poking()) poke(world, form, sizes, item, record);
}

LowMemory::Block itemBlock(const World& world, const RecordParts& parts) {
    for (const RecordPart& part : parts.all()) {
        const LowMemory::Block block = world.memory.find(atAddress<void>(part.address));
        if (block && block.kind == BlockKind::item) return block;
    }
    return {};
}

}  // namespace ovno2::simulator
