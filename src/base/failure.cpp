#include "base/failure.h"

namespace ovno2 {

TextView describeFailure(FailureNumber number) {
    switch (number) {
        case invalidProcedureCall:
            return u"Invalid procedure call or argument";
        case overflowFailure:
            return u"Overflow";
        case outOfMemory:
            return u"Out of memory";
        case subscriptOutOfRange:
            return u"Subscript out of range";
        case divisionByZero:
            return u"Division by zero";
        case typeMismatch:
            return u"Type mismatch";
        case badCallingConvention:
            return u"Bad DLL calling convention";
        case internalError:
            return u"Internal error";
        case badFileNameOrNumber:
            return u"Bad file name or number";
        case fileNotFound:
            return u"File not found";
        case fileAlreadyOpen:
            return u"File already open";
        case deviceIoError:
            return u"Device I/O error";
        case fileAlreadyExists:
            return u"File already exists";
        case diskFull:
            return u"Disk full";
        case permissionDenied:
            return u"Permission denied";
        case pathAccessError:
            return u"Path/File access error";
        case pathNotFound:
            return u"Path not found";
        case objectNotSet:
            return u"Object variable or With block variable not set";
        case cannotCreateObject:
            return u"ActiveX component can't create object";
        case memberNotSupported:
            return u"Object doesn't support this property or method";
        case entryPointMissing:
            return u"Can't find DLL entry point";
        default:
            return u"Application-defined or object-defined error";
    }
}

}  // namespace ovno2
