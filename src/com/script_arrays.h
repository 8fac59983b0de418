// Arrays as script hosts have them, and the typed arrays that the interface speaks.
//
// VBScript has arrays of VARIANT; JScript has objects with a length and numbered properties. Functions that
// return an array give it to the caller; a null array is one without elements. All throw std::bad_alloc, and
// LateBindingError (com/late_argument.h) where an element cannot be converted.
#pragma once

#include "com/interface.h"

namespace ovno2::com {

// `type` is VT_BSTR or VT_I4. The bounds stay, in all dimensions.
SAFEARRAY* typedFromVariants(SAFEARRAY* variants, VARTYPE type, LCID locale);
SAFEARRAY* variantsFromTyped(SAFEARRAY* typed);
// Puts the elements of `typed` in an array of VARIANT that keeps its shape, as far as they fit.
void putTyped(SAFEARRAY* typed, SAFEARRAY* variants);

// An array whose elements are arrays themselves becomes one of two dimensions.
SAFEARRAY* typedFromObject(IDispatch* object, VARTYPE type, LCID locale);
// Makes the object hold exactly these elements; what it refuses is left out.
void putTyped(SAFEARRAY* typed, IDispatch* object);

// Whether both have the same type, bounds and elements. Never of two arrays of records, whose members only
// the host knows.
bool sameElements(SAFEARRAY* a, SAFEARRAY* b);

}  // namespace ovno2::com
