#include "RequiredTools.h"

#include <QStandardPaths>

using namespace Qt::StringLiterals;

QStringList missingTools(const QStringList &programs)
{
    QStringList missing;
    for (const QString &program : programs) {
        // Daemons may be outside of the user's path.
        if (QStandardPaths::findExecutable(program).isEmpty()
            && QStandardPaths::findExecutable(program, {u"/usr/sbin"_s}).isEmpty()) {
            missing.append(program);
        }
    }
    return missing;
}

bool areToolsRequired()
{
    return qEnvironmentVariableIsSet("CI") || qEnvironmentVariableIsSet("VELMORA_REQUIRE_TOOLS");
}
