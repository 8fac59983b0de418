#include "com/member_table.h"

#include <algorithm>

#include "base/failure.h"
#include "base/values.h"
#include "com/texts.h"
#include "com/type_libraries.h"

namespace ovno2::com {

namespace {

void requireSuccess(HRESULT result) {
    if (FAILED(result)) throw RuntimeFailure(internalError);
}

// A description that belongs to the type information it was taken from.
class FunctionDescription {
  public:
    FunctionDescription(ITypeInfo& type, UINT index) : type_(type) {
        requireSuccess(type_.GetFuncDesc(index, &description_));
    }
    ~FunctionDescription() { type_.ReleaseFuncDesc(description_); }
    FunctionDescription(const FunctionDescription&) = delete;
    FunctionDescription& operator=(const FunctionDescription&) = delete;
    const FUNCDESC* operator->() const { return description_; }

  private:
    ITypeInfo& type_;
    FUNCDESC* description_ = nullptr;
};

TYPEKIND kindOfUserType(ITypeInfo& type, HREFTYPE reference) {
    ComPointer<ITypeInfo> referred;
    TYPEATTR* attributes = nullptr;
    // The records' library may not be found; nothing else in the interface lies outside its own.
    if (FAILED(type.GetRefTypeInfo(reference, referred.out())) || FAILED(referred->GetTypeAttr(&attributes)))
        return TKIND_RECORD;
    const TYPEKIND kind = attributes->typekind;
    referred->ReleaseTypeAttr(attributes);
    return kind;
}

ParameterKind kindOf(ITypeInfo& type, const TYPEDESC& description, bool inArray) {
    switch (description.vt) {
        case VT_BSTR:
            return inArray ? ParameterKind::texts : ParameterKind::text;
        case VT_I4:
        case VT_INT:
            return inArray ? ParameterKind::numbers : ParameterKind::number;
        case VT_BOOL:
            return ParameterKind::boolean;
        case VT_DISPATCH:
            return ParameterKind::object;
        case VT_SAFEARRAY:
            return kindOf(type, *description.lptdesc, /*inArray=*/true);
        case VT_USERDEFINED:
            if (kindOfUserType(type, description.hreftype) == TKIND_ENUM)
                return inArray ? ParameterKind::numbers : ParameterKind::number;
            return inArray ? ParameterKind::records : ParameterKind::record;
        default:
            throw RuntimeFailure(internalError);
    }
}

Parameter readParameter(ITypeInfo& type, const ELEMDESC& description) {
    Parameter parameter;
    const TYPEDESC* passed = &description.tdesc;
    parameter.byReference = passed->vt == VT_PTR;
    if (parameter.byReference) passed = passed->lptdesc;
    parameter.kind = kindOf(type, *passed, /*inArray=*/false);
    const PARAMDESC& use = description.paramdesc;
    parameter.optional = (use.wParamFlags & (PARAMFLAG_FOPT | PARAMFLAG_FHASDEFAULT)) != 0;
    if ((use.wParamFlags & PARAMFLAG_FHASDEFAULT) != 0) {
        const VARIANT& value = use.pparamdescex->varDefaultValue;
        if (V_VT(&value) == VT_BSTR)
            parameter.defaultText = Text(viewOf(V_BSTR(&value)));
        else if (V_VT(&value) == VT_BOOL)
            parameter.defaultNumber = V_BOOL(&value);
        else
            parameter.defaultNumber = static_cast<Long>(V_I4(&value));
    }
    return parameter;
}

Member readMember(ITypeInfo& type, UINT index) {
    const FunctionDescription description(type, index);
    Member member;
    member.id = description->memid;
    member.invokeKind = static_cast<WORD>(description->invkind);
    member.slot = static_cast<std::size_t>(description->oVft) / sizeof(void*);

    // The member's own name, then those of its parameters; a new value has none.
    std::vector<BSTR> names(static_cast<std::size_t>(description->cParams) + 1, nullptr);
    UINT named = 0;
    requireSuccess(type.GetNames(member.id, names.data(), static_cast<UINT>(names.size()), &named));
    struct Release {
        std::vector<BSTR>& names;
        ~Release() {
            for (BSTR name : names)
                SysFreeString(name);
        }
    } const release{names};

    member.name = Text(viewOf(names[0]));
    for (SHORT i = 0; i < description->cParams; ++i) {
        const ELEMDESC& parameter = description->lprgelemdescParam[i];
        if ((parameter.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) != 0) {
            member.result = parameter.tdesc.lptdesc->vt;
            continue;
        }
        member.parameters.push_back(readParameter(type, parameter));
        member.parameters.back().name = Text(viewOf(names[static_cast<std::size_t>(i) + 1]));
    }
    return member;
}

}  // namespace

MemberTable::MemberTable() {
    const ComPointer<ITypeInfo> dispatch = typeInformation(ownLibrary, __uuidof(_covNo2));
    if (!dispatch) throw RuntimeFailure(internalError);
    // The same interface with its slots.
    constexpr UINT slotForm = static_cast<UINT>(-1);
    HREFTYPE reference = 0;
    ComPointer<ITypeInfo> type;
    requireSuccess(dispatch->GetRefTypeOfImplType(slotForm, &reference));
    requireSuccess(dispatch->GetRefTypeInfo(reference, type.out()));
    TYPEATTR* attributes = nullptr;
    requireSuccess(type->GetTypeAttr(&attributes));
    const UINT count = attributes->cFuncs;
    type->ReleaseTypeAttr(attributes);
    members_.reserve(count);
    for (UINT i = 0; i < count; ++i)
        members_.push_back(readMember(*type.get(), i));
    // Late-bound calls look members up by id.
    std::sort(members_.begin(), members_.end(), [](const Member& a, const Member& b) { return a.id < b.id; });
}

const Member* MemberTable::find(TextView name) const {
    const auto found = std::find_if(members_.begin(), members_.end(), [&](const Member& member) {
        return equalsIgnoringCase(member.name, name);
    });
    return found == members_.end() ? nullptr : &*found;
}

const Member* MemberTable::find(DISPID id) const {
    const auto found =
        std::lower_bound(members_.begin(), members_.end(), id,
                         [](const Member& member, DISPID wanted) { return member.id < wanted; });
    return found == members_.end() || found->id != id ? nullptr : &*found;
}

const MemberTable& memberTable() {
    static const MemberTable table;
    return table;
}

}  // namespace ovno2::com
