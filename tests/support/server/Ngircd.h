#pragma once

#include "ServerProcess.h"

/// A real IRC server of the system's, with no wait between lines.
///
/// It knows no WATCH.
class Ngircd final : public ServerProcess
{
public:
    Ngircd();
};
