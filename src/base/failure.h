// Failure numbers and the one exception of the core.
//
// Numbers and texts are those of a classic Basic run-time. Seam methods that can fail return a
// `FailureNumber`
// (`noFailure` on success); the core throws `RuntimeFailure` and nothing else, and `attempt`
// (core/attempt.h) turns it into the thread's pending failure.
#pragma once

#include <exception>

#include "base/types.h"

namespace ovno2 {

using FailureNumber = Long;

inline constexpr FailureNumber noFailure = 0;
inline constexpr FailureNumber invalidProcedureCall = 5;
inline constexpr FailureNumber overflowFailure = 6;
inline constexpr FailureNumber outOfMemory = 7;
inline constexpr FailureNumber subscriptOutOfRange = 9;
inline constexpr FailureNumber divisionByZero = 11;
inline constexpr FailureNumber typeMismatch = 13;
inline constexpr FailureNumber badCallingConvention = 49;
inline constexpr FailureNumber internalError = 51;
inline constexpr FailureNumber badFileNameOrNumber = 52;
inline constexpr FailureNumber fileNotFound = 53;
inline constexpr FailureNumber fileAlreadyOpen = 55;
inline constexpr FailureNumber deviceIoError = 57;
inline constexpr FailureNumber fileAlreadyExists = 58;
inline constexpr FailureNumber diskFull = 61;
inline constexpr FailureNumber permissionDenied = 70;
inline constexpr FailureNumber pathAccessError = 75;
inline constexpr FailureNumber pathNotFound = 76;
inline constexpr FailureNumber objectNotSet = 91;
inline constexpr FailureNumber cannotCreateObject = 429;
inline constexpr FailureNumber memberNotSupported = 438;
inline constexpr FailureNumber entryPointMissing = 453;

// The run-time's own description of a number; "Application-defined or object-defined error" for an unknown
// one.
TextView describeFailure(FailureNumber number);

// A failed step. `number` is one of the constants above, `description` the text the log shows behind it.
class RuntimeFailure : public std::exception {
  public:
    explicit RuntimeFailure(FailureNumber number) : number_(number), description_(describeFailure(number)) {}
    RuntimeFailure(FailureNumber number, Text description)
        : number_(number), description_(std::move(description)) {}

    FailureNumber number() const { return number_; }
    const Text& description() const { return description_; }
    const char* what() const noexcept override { return "run-time failure"; }

  private:
    FailureNumber number_;
    Text description_;
};

}  // namespace ovno2
