// The connectivity library, bound by name at run time.
//
// Each function below is an object. Its entry point is looked up at the first call on a thread, and again at
// every call while it is missing. A call cannot be made when the library file cannot be loaded (failure 53)
// or does not export the function (453).
//
// `NAME.tried(...)` makes the call and never throws: the answer tells a status from a call that could not be
// made, whose failure is then the thread's pending one. This is the form to use. `NAME(...)` calls like the
// function itself and throws RuntimeFailure; it is for a step of more than the call, inside `attempt`.
#pragma once

#include "base/failure.h"
#include "core/attempt.h"
#include "library/library_calls.h"
#include "platform/thread_state.h"
#include "platform_native/call.h"

namespace ovno2::library {

// clang-format off
#define OVNO2_LIBRARY_FUNCTIONS(FUNCTION) \
    FUNCTION(ConnAPI, CONAGetConnAPIVersion) FUNCTION(ConnAPI, CONAInitialize) FUNCTION(ConnAPI, CONAUninitialize) \
    FUNCTION(ConnAPI, DMAPI_GetAPIVersion) FUNCTION(ConnAPI, DMAPI_Initialize) FUNCTION(ConnAPI, DMAPI_Terminate) \
    FUNCTION(ConnAPI, CONAOpenDM) FUNCTION(ConnAPI, CONACloseDM) FUNCTION(ConnAPI, CONAGetDeviceCount) \
    FUNCTION(ConnAPI, CONAGetDevices) FUNCTION(ConnAPI, CONAFreeDeviceStructure) \
    FUNCTION(ConnAPI, CONAGetDeviceInfo) FUNCTION(ConnAPI, CONAFreeDeviceInfoStructure) \
    FUNCTION(ConnAPI, CONASearchDevices) FUNCTION(ConnAPI, CONAChangeDeviceTrustedState) \
    FUNCTION(ConnAPI, MCAPI_Initialize) FUNCTION(ConnAPI, MCAPI_Terminate) FUNCTION(ConnAPI, CONAOpenMM) \
    FUNCTION(ConnAPI, CONACloseMM) FUNCTION(ConnAPI, CONAMMGetMedia) FUNCTION(ConnAPI, CONAMMSetMedia) \
    FUNCTION(ConnAPI, CONAMMFreeMediaStructures) \
    FUNCTION(ConnAPI, FSAPI_GetAPIVersion) FUNCTION(ConnAPI, FSAPI_Initialize) FUNCTION(ConnAPI, FSAPI_Terminate) \
    FUNCTION(ConnAPI, CONAOpenFS) FUNCTION(ConnAPI, CONACloseFS) FUNCTION(ConnAPI, CONAFindBegin) \
    FUNCTION(ConnAPI, CONAFindNextFolder) FUNCTION(ConnAPI, CONAFindNextFile) FUNCTION(ConnAPI, CONAFindEnd) \
    FUNCTION(ConnAPI, CONASetCurrentFolder) FUNCTION(ConnAPI, CONAReadFile) FUNCTION(ConnAPI, CONAWriteFile) \
    FUNCTION(ConnAPI, CONARenameFile) FUNCTION(ConnAPI, CONARenameFolder) FUNCTION(ConnAPI, CONADeleteFile) \
    FUNCTION(ConnAPI, CONACreateFolder) FUNCTION(ConnAPI, CONADeleteFolder) \
    FUNCTION(ConnAPI, CONAAllocString) FUNCTION(ConnAPI, CONAFreeString) FUNCTION(ConnAPI, CONAAllocMemory) \
    FUNCTION(ConnAPI, CONAFreeMemory) \
    FUNCTION(DAAPI, CAAPI_Initialize) FUNCTION(DAAPI, CAAPI_Terminate) FUNCTION(DAAPI, CAGetAPIVersion) \
    FUNCTION(DAAPI, DAOpenCA) FUNCTION(DAAPI, DACloseCA) FUNCTION(DAAPI, CAGetFolderInfo) \
    FUNCTION(DAAPI, CAGetIDList) FUNCTION(DAAPI, CABeginOperation) FUNCTION(DAAPI, CAEndOperation) \
    FUNCTION(DAAPI, CACommitOperations) FUNCTION(DAAPI, CAReadItem) FUNCTION(DAAPI, CAWriteItem) \
    FUNCTION(DAAPI, CADeleteItem) FUNCTION(DAAPI, CAFreeItemData) FUNCTION(DAAPI, CACreateFolder) \
    FUNCTION(DAAPI, CARenameFolder) FUNCTION(DAAPI, CADeleteFolder)
// clang-format on

enum class File : std::uint8_t { ConnAPI, DAAPI, count };

enum class Entry : std::uint8_t {
#define OVNO2_ENTRY(file, name) name,
    OVNO2_LIBRARY_FUNCTIONS(OVNO2_ENTRY)
#undef OVNO2_ENTRY
        count
};

// The address of an entry point; throws RuntimeFailure 53 or 453.
void* entryPoint(File file, Entry entry, const char* name);

// A status while there is none: the library was not called. No status of the library's own.
inline constexpr Long notCalled = -1;

// What became of a call.
struct Answer {
    Long status = notCalled;            // what the function returned; statuses have the top bit set
    FailureNumber failure = noFailure;  // why the call could not be made

    bool succeeded() const { return status == 0; }
    // The returned number, or `old` when the call could not be made.
    Long valueOr(Long old) const { return failure == noFailure ? status : old; }
};

constexpr bool is(Long status, Status code) {
    return static_cast<Status>(status) == code;
}

template <class Signature>
class Function;

template <class Result, class... Parameters>
class Function<Result(Parameters...)> {
  public:
    constexpr Function(File file, Entry entry, const char* name) : file_(file), entry_(entry), name_(name) {}

    Result operator()(Parameters... arguments) const {
        platform::ArgumentMismatch mismatch = 0;
        return callAs<Result(Parameters...)>(mismatch, arguments...);
    }

    // For functions that return memory the pointer itself, null when there is none.
    auto tried(Parameters... arguments) const noexcept {
        if constexpr (std::is_pointer_v<Result>) {
            Result memory = nullptr;
            attempt([&] { memory = (*this)(arguments...); });
            return memory;
        } else {
            Answer answer;
            answer.failure = attempt([&] { answer.status = static_cast<Long>((*this)(arguments...)); });
            return answer;
        }
    }

    // Calls the entry point with another signature; `mismatch` is not 0 when the library expected another
    // number of arguments than were passed.
    template <class Signature, class... Arguments>
    Result callAs(platform::ArgumentMismatch& mismatch, Arguments... arguments) const {
        return platform::NativeCall<Signature>::call(entryPoint(file_, entry_, name_), mismatch,
                                                     arguments...);
    }

  private:
    File file_;
    Entry entry_;
    const char* name_;
};

#define OVNO2_DECLARE(file, name) \
    inline constexpr Function<signature::name> name{File::file, Entry::name, #name};
OVNO2_LIBRARY_FUNCTIONS(OVNO2_DECLARE)
#undef OVNO2_DECLARE
#undef OVNO2_LIBRARY_FUNCTIONS

}  // namespace ovno2::library
