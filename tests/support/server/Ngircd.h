#pragma once

#include "ServerProcess.h"

/// The system's ngIRCd, which does not support WATCH, without flood protection.
class Ngircd final : public ServerProcess
{
public:
    Ngircd();
};
