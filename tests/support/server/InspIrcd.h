#pragma once

#include "ServerProcess.h"

/// The system's InspIRCd, which supports WATCH, without flood protection.
///
/// "OPER boss sesame" makes a client an operator.
class InspIrcd final : public ServerProcess
{
public:
    InspIrcd();
};
