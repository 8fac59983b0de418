// The vendor's desktop software: whether it is installed, how new it is, and its start.
//
// Works on the registry, the process list and the versions of the software's programs. The public class calls
// these after its own `Init` where it has one; folder reading asks for the build number. State on the thread:
// the build number alone; the suite version belongs to the public object. Nothing here throws.
#pragma once

#include "base/types.h"

namespace ovno2::Discovery {

// Works out `suiteVersion`, which keeps what an earlier call found wherever no step finds anything, and with
// `startit` starts the suite's programs when none of them runs. True when the software is new enough.
bool CheckIfNokiaSDKIsThere(bool startit, Single& suiteVersion);

// Starts the suite's synchronisation program unless it runs, and dismisses its dialog; blocks for about four
// seconds then. `pCallBack` is the host's function, 0 = none. 1 = it runs or was started, -2 = it was not
// found, -1 = not found and the host answered Cancel.
Long LaunchPCSuite2IfRequired(Long pCallBack);

// The version by rules of its own, 0 when nothing was found; changes nothing.
Single GetPCSuiteVersion();

// The build number of Nokia Suite or Nokia Ovi Suite as the registry holds it; empty until
// CheckIfNokiaSDKIsThere has found one. Valid until its next call on this thread.
TextView SuiteBuildText();

}  // namespace ovno2::Discovery
