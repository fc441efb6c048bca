#include "InspIrcd.h"

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView Configuration = R"(<server name="%2"
    description="A server for tests" network="Velmora">
<admin name="nobody" nick="nobody" email="nobody@velmora.test">
<bind address="127.0.0.1" port="%1" type="clients">
<connect allow="*" threshold="0" commandrate="1000000" fakelag="no" localmax="100" globalmax="100"
    resolvehostnames="no" useident="no">
<limits maxnick="31">
<class name="operator" commands="*">
<type name="Operator" classes="operator">
<oper name="boss" password="sesame" host="*@*" type="Operator">
<module name="watch">
)"_L1;

QStringList arguments()
{
    QStringList result{u"--nofork"_s, u"--nopid"_s, u"--nolog"_s};
    // The server refuses to run as root without this option. It listens on the loopback only.
    if (geteuid() == 0)
        result.append(u"--runasroot"_s);
    result.append(u"--config"_s);
    return result;
}

} // namespace

// AppArmor allows this server to read only its folder under /etc.
InspIrcd::InspIrcd()
    : ServerProcess({.program = u"inspircd"_s,
                     .arguments = arguments(),
                     .configuration = Configuration,
                     .isConfined = true})
{
}
