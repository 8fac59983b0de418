// Safe arrays of the host as the module's arrays, and back.
//
// A host's array may be null, have no elements, or have elements from any lower bound. Only what changed is
// written; an array whose shape changed is replaced by a new one, into which the elements that the module
// kept move with everything the host has in them. An array that must keep its shape (fixed or locked) gets
// the elements that fit.
#pragma once

#include <algorithm>

#include "base/host_array.h"
#include "com/pending_writes.h"
#include "com/safe_array.h"

namespace ovno2::com {

// How one element lies in a safe array: `Slot` is its type there; `hasHostMembers` tells whether a slot holds
// more than the module knows, so that a new element needs a new slot.
template <class Element>
struct ElementForm;

template <>
struct ElementForm<Text> {
    using Slot = BSTR;
    static constexpr bool hasHostMembers = false;
    static bool fits(SAFEARRAY* array) { return elementType(array) == VT_BSTR; }
    static SAFEARRAY* create(SAFEARRAY*, SAFEARRAYBOUND bound) { return SafeArrayCreate(VT_BSTR, 1, &bound); }
    static Text read(const Slot& slot) { return Text(viewOf(slot)); }
    // Prepares the write of `value` to `place`, which will then hold what `current` holds now.
    static void write(PendingWrites& writes, Slot& place, const Slot& current, const Text& value) {
        writes.text(&place, current, value);
    }
};

template <>
struct ElementForm<Long> {
    using Slot = LONG;
    static constexpr bool hasHostMembers = false;
    static bool fits(SAFEARRAY* array) { return elementType(array) == VT_I4; }
    static SAFEARRAY* create(SAFEARRAY*, SAFEARRAYBOUND bound) { return SafeArrayCreate(VT_I4, 1, &bound); }
    static Long read(const Slot& slot) { return slot; }
    static void write(PendingWrites& writes, Slot& place, const Slot& current, Long value) {
        writes.number(&place, current, value);
    }
};

template <class Element>
class ArrayArgument {
  public:
    using Form = ElementForm<Element>;
    using Slot = typename Form::Slot;

    explicit ArrayArgument(SAFEARRAY** host) : host_(host) {
        SAFEARRAY* const array = current();
        if (!array) return;
        usable_ = canHold(array);
        if (!usable_ || elementCount(array) == 0) return;
        std::vector<Element> elements;
        elements.reserve(elementCount(array));
        for (std::size_t i = 0; i < elementCount(array); ++i)
            elements.push_back(Form::read(slots(array)[i]));
        value_ = HostArray<Element>(std::move(elements), array->rgsabound[0].lLbound);
    }

    // False for an array of other elements or with more than one dimension.
    bool usable() const { return usable_; }
    HostArray<Element>& value() { return value_; }

    void prepare() {
        if (!host_) return;
        // While the member ran, the host may have put another array there.
        SAFEARRAY* const array = current();
        if (array && !canHold(array)) return;
        const std::vector<Element>& elements = value_.elements();
        const std::size_t had = array ? elementCount(array) : 0;
        const std::size_t kept = std::min({value_.kept(), had, elements.size()});
        const bool sameShape =
            elements.size() == had && (had == 0 || array->rgsabound[0].lLbound == value_.lowerBound());
        if ((sameShape && (kept == had || !Form::hasHostMembers)) || !mayBeReplaced(array)) {
            for (std::size_t i = 0; i < std::min(had, elements.size()); ++i)
                Form::write(writes_, slots(array)[i], slots(array)[i], elements[i]);
            return;
        }
        replaces_ = true;
        if (elements.empty()) return;
        replacement_.reset(Form::create(array, {static_cast<ULONG>(elements.size()), value_.lowerBound()}));
        if (!replacement_) throw std::bad_alloc();
        moved_ = kept;
        Slot* const places = slots(replacement_.get());
        for (std::size_t i = 0; i < elements.size(); ++i)
            Form::write(writes_, places[i], i < kept ? slots(array)[i] : places[i], elements[i]);
    }

    void putInPlace() noexcept {
        if (replaces_) {
            SAFEARRAY* const old = current();
            if (moved_ > 0) {
                const std::size_t bytes = moved_ * sizeof(Slot);
                std::memcpy(replacement_.get()->pvData, old->pvData, bytes);
                std::memset(old->pvData, 0, bytes);
            }
            *host_ = replacement_.release();
            replacement_.reset(old);
        }
        writes_.putInPlace();
    }

  private:
    SAFEARRAY* current() const { return host_ ? *host_ : nullptr; }
    static bool canHold(SAFEARRAY* array) { return SafeArrayGetDim(array) == 1 && Form::fits(array); }
    static Slot* slots(SAFEARRAY* array) { return static_cast<Slot*>(array->pvData); }

    SAFEARRAY** host_;
    bool usable_ = true;
    HostArray<Element> value_;
    PendingWrites writes_;
    bool replaces_ = false;
    OwnedSafeArray replacement_;  // null = the array that has no elements
    std::size_t moved_ = 0;       // leading elements that move into the replacement
};

// A two-dimensional array of texts. With another number of dimensions it is a table without rows.
class TableArgument {
  public:
    explicit TableArgument(SAFEARRAY** host);
    // False for an array of other elements.
    bool usable() const { return usable_; }
    const TextTable& value() const { return value_; }
    void prepare() {}
    void putInPlace() noexcept {}

  private:
    bool usable_ = true;
    TextTable value_;
};

}  // namespace ovno2::com
