// One call across the boundary: the host's arguments as the module's, the member, the results back.
//
// Nothing leaves here but S_OK. A call whose arguments cannot be taken, such as an array of other elements,
// or that runs out of memory on its way in or out, gives the failure result and leaves the host's variables
// as they were.
#pragma once

#include <tuple>

#include "base/secret.h"
#include "com/records.h"
#include "core/attempt.h"
#include "platform/win32/dispatch_object.h"

namespace ovno2::com {

// An argument of the module's type `Parameter`, made of what the host passed.
template <class Parameter>
class Argument;

// What the module only reads.
class ReadOnlyArgument {
  public:
    bool usable() const { return true; }
    void prepare() {}
    void putInPlace() noexcept {}
};

template <>
class Argument<Long> : public ReadOnlyArgument {
  public:
    explicit Argument(LONG value) : value_(value) {}
    explicit Argument(const LONG* host) : value_(host ? *host : 0) {}
    Long value() const { return value_; }

  private:
    Long value_;
};

template <>
class Argument<bool> : public ReadOnlyArgument {
  public:
    explicit Argument(VARIANT_BOOL value) : value_(value != VARIANT_FALSE) {}
    bool value() const { return value_; }

  private:
    bool value_;
};

template <>
class Argument<const Text&> : public ReadOnlyArgument {
  public:
    explicit Argument(BSTR value) : value_(viewOf(value)) {}
    explicit Argument(const BSTR* host) : value_(host ? viewOf(*host) : TextView()) {}
    // A passkey comes this way.
    ~Argument() { wipe(value_.data(), value_.size()); }
    Argument(const Argument&) = delete;
    Argument& operator=(const Argument&) = delete;
    const Text& value() const { return value_; }

  private:
    Text value_;
};

template <>
class Argument<Text&> {
  public:
    explicit Argument(BSTR* host) : host_(host), value_(host ? viewOf(*host) : TextView()) {}
    bool usable() const { return true; }
    Text& value() { return value_; }
    void prepare() {
        if (host_) writes_.text(host_, *host_, value_);
    }
    void putInPlace() noexcept { writes_.putInPlace(); }

  private:
    BSTR* host_;
    Text value_;
    PendingWrites writes_;
};

template <>
class Argument<const ObjectPointer&> : public ReadOnlyArgument {
  public:
    explicit Argument(IDispatch** host) : value_(platform::win32::wrapDispatch(host ? *host : nullptr)) {}
    const ObjectPointer& value() const { return value_; }

  private:
    ObjectPointer value_;
};

template <class Element>
class Argument<HostArray<Element>&> : public ArrayArgument<Element> {
    using ArrayArgument<Element>::ArrayArgument;
};

template <>
class Argument<const TextArray&> : public ArrayArgument<Text> {
  public:
    using ArrayArgument<Text>::ArrayArgument;
    void prepare() {}
    void putInPlace() noexcept {}
};

template <>
class Argument<const TextTable&> : public TableArgument {
    using TableArgument::TableArgument;
};

template <>
class Argument<CalItem&> {
  public:
    explicit Argument(tCalItem* host) : host_(host) {
        if (host_) value_ = ElementForm<CalItem>::read(*host_);
    }
    bool usable() const { return host_ != nullptr; }
    CalItem& value() { return value_; }
    void prepare() { ElementForm<CalItem>::write(writes_, *host_, *host_, value_); }
    void putInPlace() noexcept { writes_.putInPlace(); }

  private:
    tCalItem* host_;
    CalItem value_;
    PendingWrites writes_;
};

// What a member reports that could not be run.
template <class Result>
Result failureResult() {
    if constexpr (std::is_same_v<Result, Long>)
        return -1;
    else if constexpr (std::is_same_v<Result, Variant>)
        return Long{-1};
    else
        return Result();
}

inline void storeResult(LONG* host, Long result) {
    *host = result;
}
inline void storeResult(float* host, Single result) {
    *host = result;
}
inline void storeResult(VARIANT_BOOL* host, bool result) {
    *host = result ? VARIANT_TRUE : VARIANT_FALSE;
}
inline void storeResult(VARIANT* host, const Variant& result) {
    VariantInit(host);
    attempt([&] { platform::win32::toOleVariant(result, *host); });
}

// Runs `member` of `module` with the host's `given` arguments.
template <class Result, class... Parameters, class... Given>
requires(!std::is_void_v<Result>) Result
    runMember(covNo2& module, Result (covNo2::*member)(Parameters...) noexcept, Given... given)
noexcept {
    Result outcome = failureResult<Result>();
    attempt([&] {
        std::tuple<Argument<Parameters>...> arguments(given...);
        std::apply(
            [&](auto&... argument) {
                if (!(argument.usable() && ...)) return;
                Result result = (module.*member)(argument.value()...);
                (argument.prepare(), ...);
                (argument.putInPlace(), ...);
                outcome = std::move(result);
            },
            arguments);
    });
    return outcome;
}

template <class... Parameters, class... Given>
void runMember(covNo2& module, void (covNo2::*member)(Parameters...) noexcept, Given... given) noexcept {
    attempt([&] {
        std::tuple<Argument<Parameters>...> arguments(given...);
        std::apply(
            [&](auto&... argument) {
                if ((argument.usable() && ...)) (module.*member)(argument.value()...);
            },
            arguments);
    });
}

}  // namespace ovno2::com
