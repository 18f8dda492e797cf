#pragma once

#include "accredit/host/MCApplicInfo4XML.h"

namespace app {

/// The name and version of this program, and the time of the call.
MCApplicInfo4XML ThisProgram();

}  // namespace app
