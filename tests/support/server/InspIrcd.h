#pragma once

#include "ServerProcess.h"

/// A real IRC server of the system's that tells about watched nicks, with no wait between lines.
///
/// Whoever says "OPER boss sesame" is an operator from then on.
class InspIrcd final : public ServerProcess
{
public:
    InspIrcd();
};
