#include "com/late_binding.h"

#include <vector>

#include "base/values.h"
#include "com/late_argument.h"
#include "com/member_table.h"
#include "platform_native/call.h"

namespace ovno2::com {

namespace {

// Where an error lies: the position of the argument in the caller's list.
struct ArgumentError {
    HRESULT result;
    UINT position;
};

// The caller's arguments by the member's parameters: for each the position in the caller's list, or
// `leftOut`.
constexpr UINT leftOut = static_cast<UINT>(-1);

std::vector<UINT> assignArguments(const Member& member, const DISPPARAMS& given) {
    std::vector<UINT> positions(member.parameters.size(), leftOut);
    // The first argument is the last of the list; named ones lead it.
    const UINT unnamed = given.cArgs - given.cNamedArgs;
    if (given.cNamedArgs > given.cArgs || unnamed > positions.size())
        throw LateBindingError{DISP_E_BADPARAMCOUNT};
    for (UINT i = 0; i < unnamed; ++i)
        positions[i] = given.cArgs - 1 - i;
    for (UINT i = 0; i < given.cNamedArgs; ++i) {
        const DISPID name = given.rgdispidNamedArgs[i];
        const bool newValue = name == DISPID_PROPERTYPUT && member.invokeKind == DISPATCH_PROPERTYPUT;
        const std::size_t parameter = newValue ? positions.size() - 1 : static_cast<std::size_t>(name);
        if (!newValue && (name < 0 || parameter >= positions.size()))
            throw ArgumentError{DISP_E_PARAMNOTFOUND, i};
        if (positions[parameter] != leftOut) throw LateBindingError{DISP_E_BADPARAMCOUNT};
        positions[parameter] = i;
    }
    for (std::size_t i = 0; i < positions.size(); ++i)
        if (positions[i] == leftOut && !member.parameters[i].optional)
            throw LateBindingError{DISP_E_BADPARAMCOUNT};
    return positions;
}

bool mayBeInvokedAs(const Member& member, WORD kind) {
    if (member.invokeKind == DISPATCH_METHOD) return (kind & DISPATCH_METHOD) != 0;
    return (kind & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
}

// What a member reports for which there was no memory.
void setFailure(VARTYPE type, VARIANT& result) {
    switch (type) {
        case VT_BOOL:
            V_BOOL(&result) = VARIANT_FALSE;
            V_VT(&result) = VT_BOOL;
            break;
        case VT_R4:
            V_R4(&result) = 0;
            V_VT(&result) = VT_R4;
            break;
        case VT_EMPTY:
            break;
        default:
            V_I4(&result) = -1;
            V_VT(&result) = VT_I4;
            break;
    }
}

// Calls the member's slot; what it gives back goes to `result`.
void callSlot(_covNo2& object, const Member& member, std::vector<LateArgument>& arguments, VARIANT& result) {
    VARIANT slotResult;
    VariantInit(&slotResult);
    std::vector<std::uint32_t> words;
    words.reserve(arguments.size() + 2);
    words.push_back(reinterpret_cast<std::uint32_t>(&object));
    for (const LateArgument& argument : arguments)
        words.push_back(argument.word());
    if (member.result == VT_VARIANT)
        words.push_back(reinterpret_cast<std::uint32_t>(&slotResult));
    else if (member.result != VT_EMPTY)
        words.push_back(reinterpret_cast<std::uint32_t>(&V_I4(&slotResult)));

    void* const* const slots = *reinterpret_cast<void* const* const*>(&object);
    platform::ArgumentMismatch mismatch = 0;
    platform::callWithWords(slots[member.slot], words.data(), words.size(), mismatch);
    if (member.result != VT_VARIANT) V_VT(&slotResult) = member.result;
    result = slotResult;
}

HRESULT invoke(_covNo2& object, const Member& member, LCID locale, const DISPPARAMS& given, VARIANT& result) {
    const std::vector<UINT> positions = assignArguments(member, given);
    std::vector<LateArgument> arguments(positions.size());
    for (std::size_t i = 0; i < positions.size(); ++i) {
        VARIANT* const passed = positions[i] == leftOut ? nullptr : &given.rgvarg[positions[i]];
        try {
            arguments[i].take(member.parameters[i], passed, locale);
        } catch (const LateBindingError& error) {
            throw ArgumentError{error.result, positions[i]};
        }
    }
    callSlot(object, member, arguments, result);
    for (LateArgument& argument : arguments)
        argument.prepareReturn();
    for (LateArgument& argument : arguments)
        argument.giveBack();
    return S_OK;
}

}  // namespace

HRESULT idsOfNames(LPOLESTR* names, UINT count, DISPID* ids) noexcept {
    if (!names || !ids || count == 0) return E_INVALIDARG;
    for (UINT i = 0; i < count; ++i)
        ids[i] = DISPID_UNKNOWN;
    try {
        const Member* const member = memberTable().find(platform::win32::fromWide(names[0]));
        if (!member) return DISP_E_UNKNOWNNAME;
        ids[0] = member->id;
        HRESULT result = S_OK;
        for (UINT i = 1; i < count; ++i) {
            const Text name = platform::win32::fromWide(names[i]);
            for (std::size_t k = 0; k < member->parameters.size(); ++k)
                if (equalsIgnoringCase(member->parameters[k].name, name)) ids[i] = static_cast<DISPID>(k);
            if (ids[i] == DISPID_UNKNOWN) result = DISP_E_UNKNOWNNAME;
        }
        return result;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT invokeLateBound(_covNo2& object, DISPID id, LCID locale, WORD kind, DISPPARAMS* parameters,
                        VARIANT* result, UINT* wrongArgument) noexcept {
    if (!parameters) return E_INVALIDARG;
    const Member* member = nullptr;
    VARIANT outcome;
    VariantInit(&outcome);
    try {
        member = memberTable().find(id);
        if (!member || !mayBeInvokedAs(*member, kind)) return DISP_E_MEMBERNOTFOUND;
        invoke(object, *member, locale, *parameters, outcome);
    } catch (const ArgumentError& error) {
        if (wrongArgument && error.position != leftOut) *wrongArgument = error.position;
        return error.result;
    } catch (const LateBindingError& error) {
        return error.result;
    } catch (...) {
        if (!member) return E_OUTOFMEMORY;
        VariantClear(&outcome);
        setFailure(member->result, outcome);
    }
    if (result)
        *result = outcome;
    else
        VariantClear(&outcome);
    return S_OK;
}

}  // namespace ovno2::com
