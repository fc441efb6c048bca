#include "Ngircd.h"

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView Configuration = R"([Global]
Name = %2
Info = A server for tests
Listen = 127.0.0.1
Ports = %1
MotdPhrase = "Be kind."
[Limits]
MaxConnectionsIP = 0
MaxNickLength = 31
MaxPenaltyTime = 0
[Options]
DNS = no
Ident = no
PAM = no
)"_L1;

} // namespace

Ngircd::Ngircd()
    : ServerProcess({.program = u"ngircd"_s,
                     .arguments = {u"-n"_s, u"-f"_s},
                     .configuration = Configuration})
{
}
