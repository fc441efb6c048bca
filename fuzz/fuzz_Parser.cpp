// What a session makes of lines: every text that it tells is a piece of them, or one of a few that
// are its own.
//
// The input is the lines, each ended by LF.

#include "Fuzzing.h"
#include "IRCConnection.h"
#include "IRCParser.h"

#include <QMetaMethod>
#include <QSignalSpy>

#include <memory>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

bool isOwnText(const QString &text)
{
    static const QStringList own{u"Connected and registered."_s, u"Server"_s,
                                 u"Socket is not connected"_s,
                                 u"All nicknames are in use. Please choose a different nick."_s};
    return own.contains(text);
}

/// All signals of a session.
class Spies final
{
public:
    explicit Spies(const IRCConnection &session)
    {
        const QMetaObject &type = IRCConnection::staticMetaObject;
        for (int index = type.methodOffset(); index < type.methodCount(); ++index) {
            if (type.method(index).methodType() == QMetaMethod::Signal)
                spies.push_back(std::make_unique<QSignalSpy>(&session, type.method(index)));
        }
    }

    /// Demands that what was told so far stems from `lines`, and forgets it.
    void check(const QString &lines)
    {
        for (const auto &spy : spies) {
            for (const QVariantList &arguments : std::as_const(*spy)) {
                for (const QVariant &argument : arguments) {
                    // A number stands where a text of the server's was read as one.
                    if (argument.metaType() == QMetaType::fromType<int>())
                        continue;
                    const QStringList texts = argument.toStringList();
                    for (const QString &text : texts)
                        Fuzzing::demand(lines.contains(text) || isOwnText(text),
                                        "what is told is a piece of the lines");
                }
            }
            spy->clear();
        }
    }

private:
    std::vector<std::unique_ptr<QSignalSpy>> spies;
};

} // namespace

int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/)
{
    Fuzzing::start();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString lines = QString::fromUtf8(Fuzzing::bytesOf(data, size));
    IRCConnection session;
    Spies spies(session);
    for (const QString &line : lines.split(u'\n'))
        IRCParser::parseLine(line, &session);
    spies.check(lines);
    return 0;
}
